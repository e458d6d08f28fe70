// SPDX-License-Identifier: LGPL-3.0-or-later

#include "darkpalette.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <QWidget>

namespace Workbench {

namespace {

const QColor Window(0x2b, 0x2d, 0x31);
const QColor Base(0x1d, 0x1f, 0x22);
const QColor AlternateBase(0x24, 0x26, 0x2a);
const QColor Button(0x35, 0x38, 0x3d);
const QColor Text(0xdd, 0xdf, 0xe2);
const QColor FaintText(0x7d, 0x81, 0x87);
const QColor Highlight(0x2f, 0x6f, 0xb0);
const QColor Link(0x6c, 0xb2, 0xf0);
constexpr int FrameAlpha = 120;

/** Frames check boxes, whose edges are darker than dark windows and can't be seen there. */
class FramingStyle : public QProxyStyle
{
public:
    FramingStyle() : QProxyStyle("Fusion") {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (element != PE_IndicatorCheckBox)
            return;
        QColor color = option->palette.color(QPalette::WindowText);
        color.setAlpha(FrameAlpha);
        painter->save();
        painter->setPen(color);
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
    }
};

} // namespace

QPalette darkPalette()
{
    QPalette palette(Button, Window);
    palette.setColor(QPalette::Base, Base);
    palette.setColor(QPalette::AlternateBase, AlternateBase);
    palette.setColor(QPalette::ToolTipBase, AlternateBase);
    palette.setColor(QPalette::Highlight, Highlight);
    palette.setColor(QPalette::Link, Link);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText}) {
        palette.setColor(role, Text);
        palette.setColor(QPalette::Disabled, role, FaintText);
    }
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, FaintText);
    return palette;
}

bool hasDarkColors()
{
    return QApplication::palette().color(QPalette::Base).lightness() < 128;
}

void setDarkColors(bool dark)
{
    if (dark == hasDarkColors())
        return;
    QApplication::setStyle(dark ? new FramingStyle : QStyleFactory::create("Fusion"));
    QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());
    // Those with a style sheet keep the colours that they were polished with.
    for (QWidget *widget : QApplication::allWidgets()) {
        if (!widget->styleSheet().isEmpty())
            widget->setStyleSheet(widget->styleSheet());
    }
}

} // namespace Workbench
