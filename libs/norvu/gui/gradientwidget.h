// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/gradient.h>

#include <QColor>
#include <QString>
#include <QWidget>

namespace Norvu {
namespace Gui {

/**
 * Edits the stops of a gradient in place: a bar of its colours over a checkerboard with a handle
 * below each stop.
 *
 * Handles are numbered from 0 in the order of their keys. A click or the space bar selects one, a
 * drag moves it along the bar, also past its neighbours but never onto another one, Ctrl and a
 * click or the context menu removes it; the tab key walks through them. Where a stop is to be
 * added, the widget only says so: the receiver of pointDoubleClicked() chooses the colour and
 * inserts it.
 *
 * Keys are in the unit of the gradient, positions are pixels of the widget. After a change of the
 * gradient from outside, call keyChanged() or update().
 */
class NORVU_GUI_API GradientWidget : public QWidget
{
    Q_OBJECT

public:
    /** @param gradient  is edited; not owned, must outlive the widget */
    explicit GradientWidget(Tellarix::Gui::Gradient *gradient, QWidget *parent = nullptr,
                            Qt::WindowFlags f = Qt::WindowFlags());

    /** Colours between stops are mixed, as at first, or else drawn in steps. In steps the bar is
     *  longer by the distance of the first two stops: room for the step of the last stop. */
    void setInterpolation(bool on);
    /** Unit of the keys, kept for the owner; it isn't drawn. */
    void setUnit(const QString &unit);
    const QString &unit() const { return _unit; }
    /** Says that a stop was given another key: it becomes the selected one. Without a stop at
     *  @p newKey none is selected; @p oldKey is not looked at. */
    void keyChanged(double oldKey, double newKey);

    /** Index of the stop with exactly this key, or -1. */
    int mapKeyToIndex(double key) const;
    /** The stop of an index: the first one for a negative index, the gradient's end() beyond the
     *  last one. */
    Tellarix::Gui::Gradient::iterator mapIndexToIterator(int index);
    /** The key at a pixel column, also beyond the edges; 0 if there are no stops. */
    double mapPosToKey(int x) const;
    /**
     * The leftmost handle at a point.
     * @param checkHeight  finds nothing on the bar, above the handles; otherwise only x counts
     * @return index of the handle, -1 if there is none
     */
    int findHandle(const QPoint &pos, bool checkHeight) const;
    /** Removes a stop after pointRemoved(); an index that doesn't exist does nothing. */
    void deleteHandle(int index);

public slots:
    /** Removes the selected stop, if there is one. */
    void deleteCurrent();

signals:
    /** A stop was selected or moved. */
    void pointClicked(qreal key, QColor color);
    /** Double click on a stop, or on a place where one is to be added (@p hasKey false): there,
     *  @p color is what the gradient shows, invalid if it is empty. */
    void pointDoubleClicked(qreal key, QColor color, bool hasKey);
    /** A stop is about to be removed; gradientChanged() does not follow. */
    void pointRemoved(qreal key);
    /** Reserved: the widget doesn't emit it. */
    void pointsReleased();
    /** A stop was moved by the mouse. */
    void gradientChanged();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    int rightEdge() const { return width() - 1; }
    int barHeight() const;
    double keySpan() const;
    int mapKeyToPos(double key) const;

    void setHoverHandle(int handle);
    void clearHoverHandle();
    void hoverAtPointer();
    void dragTo(int x);
    void requestPoint(int x);

    void drawCheckerboard(QPainter &painter) const;
    void drawBar(QPainter &painter) const;
    void drawStrip(QPainter &painter) const;
    void drawHandles(QPainter &painter) const;
    void drawFocusFrame(QPainter &painter) const;

    Tellarix::Gui::Gradient *_gradient;
    int _handleSize{7};
    bool _discrete{false};
    int _hoverHandle{-1}; /**< below the pointer or reached by the tab key */
    int _currentHandle{-1};
    double _dragKey{-100000.0};
    bool _dragging{false};
    QString _unit;
};

} // namespace Gui
} // namespace Norvu
