// SPDX-License-Identifier: LGPL-3.0-or-later

#include "darkpalette.h"

#include <QApplication>
#include <QStyle>
#include <QStyleFactory>
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
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());
    // Those with a style sheet keep the colours that they were polished with.
    for (QWidget *widget : QApplication::allWidgets()) {
        if (!widget->styleSheet().isEmpty())
            widget->setStyleSheet(widget->styleSheet());
    }
}

} // namespace Workbench
