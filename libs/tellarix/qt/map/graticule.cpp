// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/graticule.h>

#include <tellarix/qt/map/projection.h>
#include <tellarix/qt/texts.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** Finer lines than this have no use, and their labels no end. */
constexpr double LeastStep = 1e-6;
/** No canvas has room for more. */
constexpr double MostLines = 10000;

QString letter(const char *text)
{
    return QCoreApplication::translate("Tellarix::Gui::Map::Graticule", text);
}

QString label(double degree, double step, const char *positive, const char *negative)
{
    int decimals = 0;
    for (double scaled = step; decimals < 6 && std::abs(scaled - std::round(scaled)) > 1e-6;
         ++decimals)
        scaled *= 10;
    const QString number = QString::number(std::abs(degree), 'f', decimals) + degrees;
    if (std::abs(degree) < step / 2 || std::abs(degree) > 180 - step * 1e-3)
        return number;
    return number + letter(degree > 0 ? positive : negative);
}

/** First and last multiple of a step within a range; as numbers, since they may be large. */
struct Multiples
{
    Multiples(double from, double to, double step)
        : first(std::ceil(from / step - 1e-9)), last(std::floor(to / step + 1e-9))
    {
        last = std::min(last, first + MostLines);
    }

    double first;
    double last;
};

} // namespace

double graticuleStep(double pixelPerDegree, double spacing)
{
    const double least = std::max(spacing / pixelPerDegree, LeastStep);
    if (!(least > 0))
        return 45;
    if (least > 5) {
        for (const double step : {10.0, 15.0, 30.0}) {
            if (step >= least)
                return step;
        }
        return 45;
    }
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double digit : {1.0, 2.0, 5.0}) {
        if (digit * power >= least * (1 - 1e-9))
            return digit * power;
    }
    return 10 * power;
}

QString longitudeLabel(double longitude, double step)
{
    return label(nearestTurn(longitude, 0), step, "E", "W");
}

QString latitudeLabel(double latitude, double step)
{
    return label(latitude, step, "N", "S");
}

QVector<GraticuleLine> meridians(const Projection &projection, double step)
{
    QVector<GraticuleLine> result;
    const View &view = projection.view();
    const double half = std::min(180.0, view.size.width() / 2.0 / view.pixelPerDegree + step);
    const double center = nearestTurn(view.center.x(), 0);
    const Multiples multiples(center - half, center + half, step);
    for (double i = multiples.first; i <= multiples.last; ++i) {
        // Not by project(), for which the globe's edges are one.
        const double x = view.size.width() / 2 + (i * step - center) * view.pixelPerDegree;
        const int pixel = static_cast<int>(std::floor(x + 0.5));
        if (pixel >= 0 && pixel < view.size.width())
            result.append({pixel, longitudeLabel(i * step, step)});
    }
    return result;
}

QVector<GraticuleLine> parallels(const Projection &projection, double step)
{
    QVector<GraticuleLine> result;
    const View &view = projection.view();
    const double x = view.center.x();
    // The view's edges as latitudes, or the globe's if these come first.
    const double limit = projection.maximumLatitude();
    const double middle = view.size.width() / 2;
    QPointF top(0, limit), bottom(0, -limit);
    projection.unproject(top, QPointF(middle, 0));
    projection.unproject(bottom, QPointF(middle, view.size.height() - 1));

    const Multiples multiples(bottom.y(), top.y(), step);
    for (double i = multiples.first; i <= multiples.last; ++i) {
        QPoint pixel;
        if (std::abs(i * step) < 90 - step * 1e-3 &&
            projection.project(pixel, QPointF(x, i * step)) && pixel.y() >= 0 &&
            pixel.y() < view.size.height())
            result.append({pixel.y(), latitudeLabel(i * step, step)});
    }
    return result;
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
