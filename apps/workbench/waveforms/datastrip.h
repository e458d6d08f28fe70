// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QWidget>

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Coverage;

/** What of the visible window a pointer has hold of. */
enum class WindowPart
{
    None,
    Start,
    Whole,
    End
};

/** A window whose part was moved by a span; its ends don't pass each other, and a whole one keeps
 *  touching @p extent. */
Tellarix::Core::TimeWindow movedWindow(const Tellarix::Core::TimeWindow &window, WindowPart part,
                                       Tellarix::Core::TimeSpan way,
                                       const Tellarix::Core::TimeWindow &extent);

/**
 * A strip below a time scale that shows where any row has data, from the first to the last record,
 * and which part of it is in view.
 *
 * Dragging the part pans, dragging its ends zooms, and a press beside it brings it there.
 */
class DataStrip : public QWidget
{
    Q_OBJECT

public:
    DataStrip(Norvu::Gui::TraceView *view, const Coverage *coverage, QWidget *parent = nullptr);

    /** Pixels of the strip between which the part in view is drawn. */
    QRect visiblePart() const;
    /** Pixel of a time, and its inverse; the strip stands under the time scale. */
    double mapTime(const Tellarix::Core::Time &time) const;
    Tellarix::Core::Time unmapTime(double x) const;

    QSize sizeHint() const override;

signals:
    /** The user asks for another window. */
    void windowRequested(const Tellarix::Core::TimeWindow &window);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QRect track() const;
    WindowPart partAt(int x) const;
    void drawData(QPainter &painter) const;
    void drawPart(QPainter &painter) const;
    void updateCursor(WindowPart part);

    Norvu::Gui::TraceView *_view;
    const Coverage *_coverage;
    WindowPart _dragged{WindowPart::None};
    Tellarix::Core::TimeWindow _dragWindow; /**< at the press */
    int _dragX{0};
};

} // namespace Workbench
