// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QWidget>

namespace Norvu {
namespace Gui {
class Trace;
class VRuler;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class SpectrogramScale;

/** What stands at the right of a row's traces: an amplitude ruler, and the axis and the colours of
 *  its spectrogram. */
class RowMargin : public QWidget
{
    Q_OBJECT

public:
    /** @param row  which will own the margin */
    explicit RowMargin(Norvu::Gui::Trace *row);

    void setRulerShown(bool show);
    /** Room for axis and colours, which only a row with a spectrogram fills. */
    void setScaleShown(bool show);
    /** What the scale needs; 0 without one. */
    int scaleWidth() const;
    /** Gives the scale as much room as those of other rows have. */
    void setScaleWidth(int width);

signals:
    void scaleWidthChanged();

private slots:
    void updateScale();

private:
    void addRuler();
    void addScale();

    Norvu::Gui::Trace *_row;
    Norvu::Gui::VRuler *_ruler{nullptr};
    SpectrogramScale *_scale{nullptr};
};

} // namespace Workbench
