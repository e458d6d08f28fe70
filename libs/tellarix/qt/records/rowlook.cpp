// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/rowlook_p.h>

#include <tellarix/qt/records/hairlines_p.h>
#include <tellarix/qt/scheme.h>

#include <QWidget>

namespace Tellarix {
namespace Gui {

namespace {

constexpr QRgb DisabledColor = 0xffa0a0a0;

} // namespace

RowLook::RowLook(const QWidget &widget, const QRect &canvas)
    : area(widget.rect()), canvas(canvas), font(widget.font()), enabled(widget.isEnabled()),
      highlighted(widget.foregroundRole() == QPalette::HighlightedText),
      text(widget.palette().color(widget.foregroundRole()))
{
    const Scheme::Records &scheme = Scheme::Current().records;
    background = widget.autoFillBackground() ? scheme.background
                                             : widget.palette().color(widget.backgroundRole());
    frame = highlighted ? hairline(withAlpha(text, 0.5)) : scheme.frame;
    gridMajor = highlighted ? hairline(withAlpha(text, 0.3)) : scheme.gridMajor;
    gridMinor = highlighted ? hairline(withAlpha(text, 0.15)) : scheme.gridMinor;
}

QColor RowLook::enabledColor(const QColor &color) const
{
    return enabled ? color : QColor(DisabledColor);
}

QColor withAlpha(QColor color, double alpha)
{
    color.setAlphaF(alpha * color.alphaF());
    return color;
}

} // namespace Gui
} // namespace Tellarix
