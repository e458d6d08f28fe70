// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QBrush>
#include <QFont>
#include <QObject>
#include <QPen>
#include <QRect>
#include <QSize>
#include <QString>

class QPainter;

namespace Norvu {
namespace Gui {

struct AnnotationItem;

/** Paints labels of the map as rounded boxes: light text on a dark one, and the other way round if
 *  they are highlighted. */
class NORVU_GUI_API AnnotationStyle : public QObject
{
    Q_OBJECT

public:
    struct Palette
    {
        QPen textPen;
        QPen borderPen;
        QBrush brush;
    };

    /** The size of a text in a font on some device. */
    struct Extent
    {
        QString text;
        QFont font;
        int resolution{0}; /**< in dots per inch; 0: nothing has been measured */
        QSize size;
        int lineHeight{0};
    };

    /** The application's font in 9 points. */
    explicit AnnotationStyle(QObject *parent = nullptr);

    /** Paints an item into its rectangle. Changes font, pen and brush of the painter. */
    virtual void draw(QPainter &painter, const AnnotationItem &item);
    /** The box of an item whose bottom centre is @p anchor; null without a text. Changes the
     *  painter's font. */
    virtual QRect itemRect(QPainter &painter, const AnnotationItem &item,
                           const QPoint &anchor) const;

    const Palette &palette(bool highlighted) const { return _palettes[highlighted ? 1 : 0]; }
    void setPalette(bool highlighted, const Palette &palette);
    const QFont &font() const { return _font; }
    void setFont(const QFont &font);

private:
    Palette _palettes[2];
    QFont _font;
};

} // namespace Gui
} // namespace Norvu
