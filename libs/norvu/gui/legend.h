// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/gradient.h>
#include <tellarix/qt/map/symbol.h>

#include <QColor>
#include <QPair>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QVector>
#include <QWidget>

namespace Norvu {
namespace Gui {

/**
 * A colour key on the map: a square with its key for each stop of a gradient, the highest on top,
 * in a frame with a title. It lies in pixels of the canvas, not at a place of the globe, and never
 * takes the mouse.
 */
class NORVU_GUI_API Legend : public Tellarix::Gui::Map::Symbol
{
public:
    /** @param title  in bold above the rows; may be empty */
    explicit Legend(QString title);
    ~Legend() override;

    /** Takes the rows from the stops of a gradient. */
    void setGradient(const Tellarix::Gui::Gradient &gradient);
    /** Top left corner of the frame. Negative coordinates count from the right or bottom edge,
     * which the frame touches at -1. Like the next it takes effect with calculateMapPosition(). */
    void setPos(const QPoint &pos);
    /** Side of the squares in pixels. */
    void setItemSize(int size);
    /** Top left corner of the rows at the last calculateMapPosition(), in pixels of the canvas. */
    QPoint contentPos() const;

    /** Lets a widget follow the content's place; the frame leaves room for its present size hint.
     *  It is not owned and may go at any time; null removes it. */
    void attachWidget(QWidget *widget);
    /** Shows or hides legend and widget. */
    void setVisible(bool visible) override;

    /** False everywhere. */
    bool isInside(int x, int y) const override;
    void calculateMapPosition(const Tellarix::Gui::Map::Canvas *canvas) override;

protected:
    void customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

private:
    struct Content
    {
        void updateGeometry(const Legend &legend, const QString &title,
                            const Tellarix::Gui::Map::Canvas *canvas, const QPoint &pos,
                            const QSize &size);
        void draw(const Legend &legend, const QString &title, QPainter &painter) const;

        /** Key as text, an unused text, and colour; from the lowest key up. */
        QVector<QPair<QPair<QString, QString>, QColor>> items;
        QPointer<QWidget> widget;
        QRect frameRect;
        QRect titleRect;
        QPoint contentPos;
        int rowLeft{0};
    };

    void init();
    void drawItem(QPainter &painter, const QPoint &pos, const QColor &color, const QString &unused,
                  const QString &text) const;

    QPoint _pos;
    int _itemSize{0};
    QString _title;
    QSize _spacing;
    QSize _widgetSize;
    Content _content;
};

} // namespace Gui
} // namespace Norvu
