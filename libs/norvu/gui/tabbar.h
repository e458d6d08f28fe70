// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QEvent>
#include <QPoint>
#include <QTabBar>

namespace Norvu {
namespace Gui {

/**
 * A tab bar that tells when a tab is dragged out of it and dropped there. Within the bar tabs are
 * moved as usual; a tab that comes back into the bar goes on being moved.
 */
class NORVU_GUI_API TabBar : public QTabBar
{
    Q_OBJECT

public:
    explicit TabBar(QWidget *parent = nullptr);

    /** The tab at a position, -1 if there is none. */
    int tabAt(const QPoint &position) const;

public slots:
    /** Follows the dragged tab when the bar moves it. */
    void updateIndex(int from, int to);

signals:
    /** A tab was dropped outside of the bar.
     *  @param index           -1 if no tab was pressed
     *  @param globalPosition  where the button was released */
    void detachRequested(int index, const QPoint &globalPosition);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool fitsAt(const QPoint &position) const;
    void postMouseEvent(QEvent::Type type, const QPoint &position);
    void resumeMove(const QPoint &position);
    void endMove(const QPoint &position);

    int _dragTab{-1};
    QPoint _pressPoint;      /**< last position that the gesture reached */
    QPoint _grabOffsetLeft;  /**< from the top left of the pressed tab to the pointer */
    QPoint _grabOffsetRight; /**< from the pointer to the bottom right of the pressed tab */
};

} // namespace Gui
} // namespace Norvu
