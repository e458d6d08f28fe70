// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <QObject>
#include <QString>

#include <optional>

class QPoint;

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Tellarix {
class RecordSequence;
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

class TraceRows;

/** The sample that is nearest to a time; none in gaps, and farther than one sample away from data.
 */
std::optional<double> sampleAt(const Tellarix::RecordSequence &records,
                               const Tellarix::Core::Time &time);

/**
 * Tells what is under the pointer: the time, as exactly as a pixel is wide, the sample there, and
 * the height of the pointer, which is that of the cross hair; over the overview, those of the row
 * whose trace is nearest.
 */
class PointerReport : public QObject
{
    Q_OBJECT

public:
    /** @param rows  whose addition has more to tell; has a view, which owns the report */
    explicit PointerReport(TraceRows *rows);

    void watch(Tellarix::Gui::RecordWidget *traces);
    void watch(Norvu::Gui::MultiTraceWidget *overview);

signals:
    /** What is under the pointer, or nothing. */
    void changed(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QString textAt(const Tellarix::Gui::RecordWidget &traces, const QPoint &position) const;
    QString textInOverview(const Norvu::Gui::MultiTraceWidget &overview,
                           const QPoint &position) const;
    QString timeAndSample(const Tellarix::Gui::RecordWidget &traces, int slot,
                          const Tellarix::Core::Time &time, double secondsPerPixel) const;
    QString heightText(double value, const QString &unit) const;

    TraceRows *_rows;
    Norvu::Gui::TraceView *_view;
};

} // namespace Workbench
