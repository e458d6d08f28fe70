// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/badge.h>

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QPalette>

namespace Norvu {
namespace Gui {

namespace {

// Luminance by the weights of ITU-R BT.709 in parts of 10,000, of a largest value of 2,550,000.
constexpr int BrightLuminance = 1609999;

// Shared by all badges, and derived from the application's font when the first one is made.
QFont _font;
bool _fontInitialized = false;

const QFont &sharedFont()
{
    if (_fontInitialized)
        return _font;

    _font = QApplication::font();
    if (_font.pointSizeF() < 0)
        _font.setPixelSize(_font.pixelSize() * 90 / 100);
    else
        _font.setPointSizeF(_font.pointSizeF() * 0.9);
    _fontInitialized = true;
    return _font;
}

bool isBright(const QColor &color)
{
    return 2126 * color.red() + 7152 * color.green() + 722 * color.blue() > BrightLuminance;
}

} // namespace

Badge::Badge(QWidget *parent) : QLabel(parent)
{
    setUp();
}

Badge::Badge(QString text, QWidget *parent) : QLabel(text, parent)
{
    setUp();
}

void Badge::setUp()
{
    // A label draws with the colour of windows by default, which setTextColor() doesn't touch.
    setForegroundRole(QPalette::Text);
    setColor(Qt::gray, false);
    setTextColor(Qt::white);
    setAlignment(Qt::AlignCenter);
    setFrameStyle(QFrame::NoFrame);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (!testAttribute(Qt::WA_SetFont))
        setFont(sharedFont());
}

QSize Badge::sizeHint() const
{
    const int height = fontMetrics().height();
    return QLabel::sizeHint() + QSize(height * 80 / 100, height / 4);
}

void Badge::setColor(const QColor &color, bool adjustTextColor)
{
    QPalette colors = palette();
    colors.setBrush(QPalette::Base, color);
    if (adjustTextColor)
        colors.setBrush(QPalette::Text, isBright(color) ? Qt::black : Qt::white);
    setPalette(colors);
}

void Badge::setTextColor(const QColor &color)
{
    QPalette colors = palette();
    colors.setBrush(QPalette::Text, color);
    setPalette(colors);
}

void Badge::paintEvent(QPaintEvent *event)
{
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Base));
        const int radius = QApplication::fontMetrics().height() / 4;
        painter.drawRoundedRect(rect(), radius, radius);
    }
    QLabel::paintEvent(event);
}

} // namespace Gui
} // namespace Norvu
