// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/measurement.h>

#include <QObject>
#include <QPair>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QVector>

class QAction;
class QMouseEvent;
class QScrollArea;

namespace Tellarix {
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class MeasuringOverlay;

/** Names and values of a measurement as texts: Δt, 1/Δt, and amplitudes if there are samples.
 *  @param unit  of the amplitudes; may be empty */
QVector<QPair<QString, QString>> measurementEntries(const Tellarix::Measurement &measurement,
                                                    const QString &unit);

/** What has to be known of a measurement's amplitudes: no data, or a gap in them; else empty. */
QString measurementWarning(const Tellarix::Measurement &measurement);

/**
 * Measures traces of a view with the mouse.
 *
 * While the tool is on, dragging with the left button over the traces of the view sets two cursors
 * across all rows, and the values between them of the row under the pointer stand in a panel beside
 * it: duration and its inverse, peak to peak amplitude and RMS, as the row shows them, filtered
 * and scaled. They stay until the next press and follow changes of the trace. It is the same in the
 * overview, where the row whose trace is nearest to the pointer is measured. While it is off, the
 * mouse selects and moves rows as ever. The tool adds its actions to the view, which owns it.
 */
class MeasuringTool : public QObject
{
    Q_OBJECT

public:
    explicit MeasuringTool(Norvu::Gui::TraceView *view);
    ~MeasuringTool() override;

    /** "Measure": turns the tool on and off. */
    QAction *measureAction() const { return _measureAction; }
    /** "Copy measurement": enabled as soon as something was measured. */
    QAction *copyAction() const { return _copyAction; }

    bool isOn() const;
    /** What was measured last, between which times; empty before. */
    const Tellarix::Measurement &measurement() const { return _measurement; }
    const Tellarix::Core::TimeWindow &window() const { return _window; }
    /** Row and values in one line. */
    QString text() const { return _text; }

public slots:
    void setOn(bool on);
    /** Puts text() and the times between which it holds into the clipboard. */
    void copy() const;
    /** To be called when the overview takes the place of the rows, gives it back or turns. */
    void followContents();

signals:
    /** Something else was measured: row and values in one line. */
    void measured(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void turn(bool on);
    void forgetRow();
    void remeasure();
    void updateMarks();

private:
    /** Where the measured row is seen, in the overlay. */
    struct Places
    {
        QRect area; /**< of all rows */
        QRect row;
        double first{0}; /**< pixels of the window's ends along the time axis */
        double last{0};
    };

    void watchRows();
    void ignoreRows();
    Norvu::Gui::MultiTraceWidget *overview() const;
    bool isTurned() const;
    Places placesInRows() const;
    Places placesInOverview() const;
    double secondsAt(const Norvu::Gui::Trace *row, const QPoint &globalPosition) const;
    bool press(const QWidget *widget, const QMouseEvent *event);
    bool move(QMouseEvent *event);
    bool release(QMouseEvent *event);
    void dragTo(const QPoint &globalPosition);
    Norvu::Gui::Trace *rowAt(const QPoint &globalPosition) const;
    void setMeasured(Norvu::Gui::Trace *row);
    QString unit() const;
    int measuredSlot() const;

    Norvu::Gui::TraceView *_view;
    QScrollArea *_scrollArea;
    QPointer<QWidget> _contents; /**< watched for rows that come later */
    MeasuringOverlay *_overlay;
    QAction *_measureAction;
    QAction *_copyAction;
    Norvu::Gui::Trace *_row{nullptr}; /**< measured one */
    bool _isDragging{false};
    double _anchor{0}; /**< cursors while dragging, in seconds relative to the alignment */
    double _end{0};
    QPoint _pointer; /**< in the measured row's record widget, or in the overview */
    Tellarix::Core::TimeWindow _window;
    Tellarix::Measurement _measurement;
    QString _text;
};

} // namespace Workbench
