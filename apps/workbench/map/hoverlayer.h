// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/annotations.h>
#include <norvu/gui/map/layer.h>

#include <QPointF>
#include <QString>

namespace Workbench {

/** One label above all others: that of what is under the mouse, whose own may have found no room.
 */
class HoverLayer : public Norvu::Gui::Map::Layer
{
    Q_OBJECT

public:
    /** @param style  in whose highlighted look the label is painted; outlives the layer */
    explicit HoverLayer(Norvu::Gui::AnnotationStyle *style, QObject *parent = nullptr);

    void draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

    /** @param place  longitude in x, latitude in y
     *  @param gap    from there to the label, in pixels */
    void show(const QPointF &place, int gap, const QString &text);
    void hide() override;

private:
    Norvu::Gui::AnnotationStyle *_style;
    QString _text;
    QPointF _place;
    int _gap{0};
};

} // namespace Workbench
