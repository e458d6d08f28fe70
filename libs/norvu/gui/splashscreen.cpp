// SPDX-License-Identifier: LGPL-3.0-or-later

#include "splashscreen.h"

#include <tellarix/core/version.h>

#include <QFontMetrics>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace Norvu {
namespace Gui {

namespace {

constexpr QRgb Teal = qRgb(0, 137, 161);
constexpr QRgb Dark = qRgb(0, 46, 56);
constexpr quint16 BandAlpha = 0xCCCC;

constexpr int PictureTop = 72;
constexpr int Margin = 13;
constexpr int TextFlags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip;

/** The maker's name behind a seismogram, in white. */
const char *const Logo = R"(<?xml version="1.0" encoding="UTF-8"?>
<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 79.23 20" fill="none"
     stroke="#ffffff" stroke-linecap="round" stroke-linejoin="round">
  <path stroke-width="1.5" d="M1 10.3 H3.6 L5.1 7.9 L7.2 13.8 L9.8 2.2 L12.6 18.2 L14.9 6.6 L16.6 12.4
           L17.8 9.6 L18.6 10.3 H21"/>
  <circle cx="9.8" cy="2.2" r="1.7" fill="#ffffff" stroke="none"/>
  <g stroke-width="2.1">
    <path d="M26.6 15.7 V4.7 L33.4 15.7 V4.7"/>
    <path d="M41.8 4.5 C44.9 4.5 46.8 7 46.8 10.2 C46.8 13.4 44.9 15.9 41.8 15.9
             C38.7 15.9 36.8 13.4 36.8 10.2 C36.8 7 38.7 4.5 41.8 4.5 Z"/>
    <path d="M50.4 15.7 V4.7 H53.5 C55.9 4.7 57.1 6 57.1 7.8 C57.1 9.6 55.9 10.9 53.5 10.9 H50.4
             M53.9 10.9 L57.4 15.7"/>
    <path d="M59.6 4.7 L63.7 15.7 L67.8 4.7"/>
    <path d="M71.1 4.7 V12 C71.1 14.5 72.4 15.9 74.5 15.9 C76.6 15.9 77.9 14.5 77.9 12 V4.7"/>
  </g>
</svg>)";

QFont sansSerif(int pixelSize, int weight = QFont::Normal)
{
    QFont font;
    font.setStyleHint(QFont::SansSerif, QFont::PreferDefault);
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

QRect corners(int left, int top, int right, int bottom)
{
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

void drawText(QPainter &painter, const QFont &font, const QColor &color, const QRect &rect,
              const QString &text)
{
    painter.save();
    // A text that is too long ends with its rectangle; descenders may reach out of it.
    painter.setClipRect(rect.adjusted(0, -rect.height(), 0, rect.height()));
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(rect, TextFlags, text);
    painter.restore();
}

QColor translucent(QRgb color)
{
    QRgba64 result = QRgba64::fromArgb32(color);
    result.setAlpha(BandAlpha);
    return QColor(result);
}

void drawBands(QPainter &painter)
{
    const int right = painter.window().width() - 1;
    painter.fillRect(corners(0, 0, right, 49), Qt::white);
    painter.fillRect(corners(0, 50, right, 71), QColor(Teal));
    painter.fillRect(corners(0, 328, right, 349), translucent(qRgb(255, 255, 255)));
    painter.fillRect(corners(0, 350, right, 399), translucent(Dark));
}

/** The versions of framework and application, one above the other in the upper right corner. */
void drawVersions(QPainter &painter, const QString &version)
{
    const QString framework = QString::fromStdString(Tellarix::Core::CurrentVersion.toString());
    const QFont versionFont = sansSerif(9);
    const QFont frameworkFont = sansSerif(14, QFont::Bold);
    const int width = std::max(QFontMetrics(versionFont).horizontalAdvance(version),
                               QFontMetrics(frameworkFont).horizontalAdvance(framework));
    const int left = painter.window().width() - width - Margin;
    drawText(painter, versionFont, QColor(Dark), corners(left, 25, left + width - 1, 38), version);
    drawText(painter, frameworkFont, QColor(Dark), corners(left, 11, left + width - 1, 24),
             framework);
}

void drawMaker(QPainter &painter, const QString &line)
{
    QSvgRenderer(QByteArray(Logo)).render(&painter, QRectF(Margin, 365, 75, 20));
    drawText(painter, sansSerif(9), Qt::white, corners(100, 368, 485, 381), line);
}

void drawTitle(QPainter &painter, const char *icon, const char *title)
{
    if (icon)
        QSvgRenderer(QString(icon)).render(&painter, QRectF(Margin, Margin, 24, 24));
    if (!title)
        return;

    const QRect rect = icon ? corners(50, 8, 356, 42) : corners(Margin, 8, 319, 42);
    drawText(painter, sansSerif(35, QFont::Bold), QColor(Dark), rect, QString(title));
}

} // namespace

SplashScreen::SplashScreen(const QPixmap &pixmap, const char *icon, const char *version,
                           const char *title, const char *subtitle)
    : QSplashScreen(QPixmap())
{
    QPixmap picture(pixmap.width(), pixmap.height() + PictureTop);
    if (picture.isNull())
        return;

    // What lies below a picture with transparent parts must not be left to chance.
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.drawPixmap(0, PictureTop, pixmap);
    drawBands(painter);
    drawVersions(painter, tr("Version %1").arg(QString(version)));
    drawMaker(painter, tr("Made by the Norvu developers, https://norvu.example.org"));
    drawTitle(painter, icon, title);
    if (subtitle) {
        drawText(painter, sansSerif(11), Qt::white, corners(Margin, 50, 486, 71),
                 QString(subtitle));
    }
    painter.end();
    setPixmap(picture);
}

SplashScreen::~SplashScreen() = default;

void SplashScreen::setMessage(const QString &msg)
{
    _message = msg;
    repaint();
}

void SplashScreen::mousePressEvent(QMouseEvent *)
{}

void SplashScreen::drawContents(QPainter *painter)
{
    painter->setFont(sansSerif(11));
    painter->setPen(QColor(Teal));
    painter->drawText(corners(Margin, 327, 486, 348), Qt::AlignCenter, _message);
}

} // namespace Gui
} // namespace Norvu
