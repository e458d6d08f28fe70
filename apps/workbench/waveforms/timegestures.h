// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QEvent>
#include <QObject>
#include <QPoint>

class QAction;
class QLabel;
class QMouseEvent;
class QScrollArea;
class QWheelEvent;

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Tellarix {
namespace Gui {
class TimeScale;
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

/**
 * Does over the traces what can be done over the time scale: Ctrl and the wheel zoom about the
 * pointer, Shift and the wheel, or a wheel or touchpad that turns sideways, pan, Shift and drag
 * select a span.
 *
 * The span is the one of the time scale. It is shown in all rows with its length; Return and a
 * double click in it zoom to it, and it goes with the selection of rows (Esc).
 *
 * Over the overview the wheel alone pans too, unless there are rows to be scrolled its way, and so
 * does dragging with the left button; whichever way time runs.
 */
class TimeGestures : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    explicit TimeGestures(Norvu::Gui::TraceView *view);

    /** "Zoom to the span", enabled while there is one. */
    QAction *zoomAction() const { return _zoom; }
    /** @param turned  scale of the overview where time runs down */
    void watch(Norvu::Gui::MultiTraceWidget *overview, Tellarix::Gui::TimeScale *turned);
    /** The selected span; empty without one. */
    Tellarix::Core::TimeWindow span() const;

public slots:
    void zoomToSelected();
    void clearSelected();

signals:
    /** The view is to be zoomed to a span. */
    void zoomRequested(const Tellarix::Core::TimeWindow &window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void showSelected();
    void placeLabel();

private:
    bool filterOverviewEvent(QEvent *event);
    bool dragOverview(const QMouseEvent &event);
    bool hasRowsToScroll(Qt::Orientation wheel) const;
    Tellarix::Gui::TimeScale *currentScale() const;
    bool turnWheel(const QWidget &widget, QWheelEvent &event);
    bool press(const QMouseEvent &event);
    bool move(const QMouseEvent &event);
    bool release(const QMouseEvent &event);
    bool doubleClick(const QMouseEvent &event);
    void sendToScale(QEvent::Type type, const QPoint &globalPosition);

    enum class Drag
    {
        None,
        Pressed, /**< may be a click with Shift, which selects rows */
        Selects,
        Pans
    };

    Norvu::Gui::TraceView *_view;
    const QObject *_scale; /**< only compared: it is still watched while the view ends */
    QScrollArea *_scrollArea;
    QAction *_zoom;
    QLabel *_label;
    Drag _drag{Drag::None};
    QPoint _pressed; /**< on the screen */
    Norvu::Gui::MultiTraceWidget *_overview{nullptr};
    Tellarix::Gui::TimeScale *_turned{nullptr};
    double _pressedLower{0}; /**< visible range when the overview was pressed */
    double _pressedUpper{0};
};

} // namespace Workbench
