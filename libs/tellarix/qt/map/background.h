// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/backgroundpainter.h>
#include <tellarix/qt/map/worlddata.h>
#include <tellarix/qt/scheme.h>

#include <QFont>
#include <QRectF>
#include <QString>
#include <QVector>

#include <memory>

class QPainter;

namespace Tellarix {
namespace Gui {
namespace Map {

/** What a background shows beside land and water. */
struct BackgroundContents
{
    bool rivers{true};
    bool borders{true};
    bool graticule{true};
    bool cities{true};
};

/** How much a background shows at one scale of the map. Ranks below 0 are none at all. */
struct BackgroundDetail
{
    WorldData::Scale scale;
    int lakeRank;
    int riverRank;
    int provinceRank;
    int cityRank;
};

TELLARIX_GUI_API BackgroundDetail backgroundDetail(double pixelPerDegree);

/**
 * The world below a map's layers: water, land, lakes, rivers, borders, coast lines, graticule and
 * towns, more of them the closer one is. The globe is cut opposite to the view's centre.
 *
 * Without the file of the world there are water and graticule only. An object doesn't change: make
 * another one for other colours.
 */
class TELLARIX_GUI_API Background : public BackgroundPainter
{
public:
    /** @param data  not null
     *  @param font  of the names of towns; labels of the graticule are a little smaller */
    Background(const Scheme::Map &colors, std::shared_ptr<const WorldData> data,
               const QFont &font = QFont(), const BackgroundContents &contents = {});
    ~Background() override;

    void paint(QImage &image, const Projection &projection) const override;

private:
    void drawWorld(QPainter &painter, const Projection &projection) const;
    QVector<QRectF> drawGraticule(QPainter &painter, const Projection &projection,
                                  const QFont &font) const;
    void drawCities(QPainter &painter, const Projection &projection, const QFont &font,
                    const QVector<QRectF> &occupied) const;
    void drawText(QPainter &painter, const QPointF &baseline, const QString &text) const;

    const Scheme::Map _colors;
    const std::shared_ptr<const WorldData> _data;
    /** As text, since Qt's fonts share caches with their copies, also in other threads. */
    const QString _font;
    const BackgroundContents _contents;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
