// SPDX-License-Identifier: LGPL-3.0-or-later

#include "norvu/ink.h"

#include <norvu/gui/fontawesome5.h>

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPainter>
#include <QRawFont>
#include <QToolButton>
#include <QtTest>

namespace Icons = Norvu::FontAwesome5;

namespace {

QImage flat(const QPixmap &pixmap, const QColor &background = Qt::white)
{
    QImage image(pixmap.size(), QImage::Format_RGB32);
    image.fill(background);
    QPainter(&image).drawPixmap(0, 0, pixmap);
    return image;
}

bool holds(const QImage &image, const QColor &color)
{
    return !Ink::rectOfColor(image, color).isEmpty();
}

/** A glyph as text in a font of its own, which no other font may lend glyphs to. */
QImage glyph(QFont font, int pixelSize, const QSize &size, QChar ch)
{
    font.setPixelSize(pixelSize);
    font.setStyleStrategy(QFont::NoFontMerging);
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(Qt::black);
    painter.drawText(image.rect(), Qt::AlignCenter, QString(ch));
    return image;
}

} // namespace

class FontAwesome5Test : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QPalette colors;
        colors.setColor(QPalette::Text, QColor(200, 0, 0));
        colors.setColor(QPalette::Disabled, QPalette::Text, QColor(0, 0, 200));
        QApplication::setPalette(colors);
    }

    void findsFaces()
    {
        const QVector<QPair<QFont, QString>> faces{
            {Icons::font(), "Font Awesome 5 Pro Regular"},
            {Icons::fontSolid(), "Font Awesome 5 Pro Solid"},
            {Icons::fontLight(), "Font Awesome 5 Pro Light"},
            {Icons::fontBrands(), "Font Awesome 5 Brands Regular"}};
        // A font database hands out the application's font for a face that it doesn't have.
        for (const auto &[font, name] : faces) {
            const QFontInfo info(font);
            QCOMPARE(info.family() + ' ' + info.styleName(), name);
            QVERIFY(QFontDatabase().styles(info.family()).contains(info.styleName()));
        }
    }

    void hasGlyphsOfLibrary()
    {
        using namespace Icons;
        const QVector<QChar> regular{chCalendarAlt, chCheckSquare, chCircle, chDotCircle,
                                     chSquare,      chSyncAlt,     chTimes,  chTrashAlt};
        const QVector<QChar> solid{chAlignCenter,    chClock, chCog,   chCrosshairs, chEye,
                                   chFilter,         chList,  chPause, chPlay,       chShower,
                                   chSortAmountDown, chSync,  chTimes, chTrash};
        for (const auto &[face, glyphs] :
             {qMakePair(Icons::font(), regular), qMakePair(Icons::fontSolid(), solid)}) {
            for (const QChar ch : glyphs) {
                QVERIFY(QRawFont::fromFont(face).supportsCharacter(ch));
                const QImage image = glyph(face, 64, QSize(100, 100), ch);
                const int height = Ink::rectOtherThan(image, image.rect(), Qt::white).height();
                // Smaller than its em and larger than a third of it: not a box of another font.
                QVERIFY2(height > 64 / 3 && height <= 80,
                         qPrintable(
                             QStringLiteral("U+%1: %2 rows").arg(ch.unicode(), 4, 16).arg(height)));
            }
        }
    }

    void takesColorByMode()
    {
        const QIcon icon = Icons::iconSolid(Icons::chSquare);
        const auto shows = [](const QIcon &drawn, QIcon::Mode mode, const QColor &color) {
            return holds(flat(drawn.pixmap(QSize(64, 64), mode)), color);
        };
        QVERIFY(shows(icon, QIcon::Selected, QColor(200, 0, 0)));
        QVERIFY(shows(icon, QIcon::Disabled, QColor(0, 0, 200)));
        QVERIFY(
            shows(Icons::iconSolid(Icons::chSquare, Qt::magenta), QIcon::Disabled, Qt::magenta));
        // The icon follows a palette that is set later.
        QPalette gray;
        gray.setColor(QPalette::Text, Qt::darkGray);
        QApplication::setPalette(gray);
        QVERIFY(shows(icon, QIcon::Normal, Qt::darkGray));
    }

    void showsStateOfCheckedButton()
    {
        QToolButton button;
        button.setAutoRaise(true);
        button.setCheckable(true);
        button.setIconSize(QSize(48, 48));
        button.resize(60, 60);
        button.setIcon(Icons::iconSolid(Icons::chSquare, Icons::chCircle, QColor(Qt::magenta),
                                        QColor(Qt::cyan)));
        const QImage off = Ink::picture(button);
        QVERIFY(holds(off, Qt::cyan) && !holds(off, Qt::magenta));

        button.click();
        const QImage on = Ink::picture(button);
        QVERIFY(holds(on, Qt::magenta) && !holds(on, Qt::cyan));

        // Glyphs differ as well: alone in one colour, the square is not the circle.
        const QIcon icon = Icons::iconSolid(Icons::chSquare, Icons::chCircle, Qt::black, Qt::black);
        const QSize size(64, 64);
        QCOMPARE(flat(icon.pixmap(size, QIcon::Normal, QIcon::On)),
                 glyph(Icons::fontSolid(), 51, size, Icons::chSquare));
        QCOMPARE(flat(icon.pixmap(size, QIcon::Normal, QIcon::Off)),
                 glyph(Icons::fontSolid(), 51, size, Icons::chCircle));
    }
};

QTEST_MAIN(FontAwesome5Test)
#include "tst_fontawesome5.moc"
