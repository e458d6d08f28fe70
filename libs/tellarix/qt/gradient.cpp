// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/gradient.h>

#include <cmath>
#include <iterator>

namespace Tellarix {
namespace Gui {

namespace {

int mixed(int from, int to, double share)
{
    return static_cast<int>(std::lround(from + share * (to - from)));
}

QColor mixed(const QColor &from, const QColor &to, double share)
{
    return QColor(mixed(from.red(), to.red(), share), mixed(from.green(), to.green(), share),
                  mixed(from.blue(), to.blue(), share), mixed(from.alpha(), to.alpha(), share));
}

} // namespace

void Gradient::setColorAt(double key, const QColor &color, const QString &text)
{
    if (!std::isnan(key))
        insert(key, qMakePair(color, text));
}

QColor Gradient::colorAt(double key, bool discrete) const
{
    if (isEmpty())
        return QColor();
    if (!(key > firstKey()))
        return first().first;

    const auto above = upperBound(key);
    const auto below = std::prev(above);
    if (discrete || above == constEnd())
        return below->first;
    return mixed(below->first, above->first, (key - below.key()) / (above.key() - below.key()));
}

Gradient Gradient::rescaled(double lower, double upper) const
{
    if (isEmpty())
        return *this;

    const double span = lastKey() - firstKey();
    Gradient result;
    for (auto it = constBegin(); it != constEnd(); ++it) {
        const double share = span > 0 ? (it.key() - firstKey()) / span : 0.0;
        const double key =
            it.key() == lastKey() && span > 0 ? upper : lower + share * (upper - lower);
        result.setColorAt(key, it->first, it->second);
    }
    return result;
}

} // namespace Gui
} // namespace Tellarix
