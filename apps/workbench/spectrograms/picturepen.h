// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QColor>
#include <QPen>

#include <optional>

namespace Tellarix {
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

/**
 * A pen for traces above colours.
 * @param quiet            colour where amplitudes are small, from which the pen stands out
 * @param samplesPerPixel  the more there are, the more of the picture is covered by the trace, and
 *                         the more of it shines through
 */
QPen penAbovePicture(const QColor &quiet, double samplesPerPixel);

/** Gives the traces of a row another pen while they stand above a picture, and back the one that
 *  they had before. */
class PicturePen
{
public:
    PicturePen(Tellarix::Gui::RecordWidget *row, int slot) : _row(row), _slot(slot) {}

    void set(const QPen &pen);
    void restore();

private:
    Tellarix::Gui::RecordWidget *_row;
    int _slot;
    std::optional<QPen> _own; /**< unless it is that of the scheme */
    bool _isSet{false};
};

} // namespace Workbench
