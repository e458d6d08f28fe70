// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/records/timescale.h>

namespace Tellarix {
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Norvu {
namespace Gui {

/**
 * An axis whose ticks stand below the samples also when it is wider than the traces, or when these
 * are shown at a scale of their own: showRange() would spread the range of the record widget over
 * the whole axis and put the times below other samples.
 */
class RowTimeScale : public Tellarix::Gui::TimeScale
{
    Q_OBJECT

public:
    explicit RowTimeScale(const Tellarix::Gui::RecordWidget *widget) : _widget(widget) {}

    /** Takes over what the record widget shows. */
    void follow();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    const Tellarix::Gui::RecordWidget *_widget;
};

} // namespace Gui
} // namespace Norvu
