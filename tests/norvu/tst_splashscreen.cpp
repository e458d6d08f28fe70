// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/splashscreen.h>

#include "ink.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

using Norvu::Gui::SplashScreen;

namespace {

const QColor Teal(0, 137, 161);

QPixmap background(const QColor &color)
{
    QPixmap result(500, 328);
    result.fill(color);
    return result;
}

QImage pictureOf(const SplashScreen &splash)
{
    return splash.pixmap().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class SplashScreenTest : public QObject
{
    Q_OBJECT

private slots:
    void laysBandsOverPicture()
    {
        // four fifths of white or dark lie over the picture at the strip and the foot
        const QVector<QPair<int, QColor>> bands{{0, Qt::white},
                                                {50, Teal},
                                                {72, QColor(200, 100, 0)},
                                                {328, QColor(244, 224, 204)},
                                                {350, QColor(40, 57, 45)}};
        const SplashScreen splash(background(QColor(200, 100, 0)), nullptr, "1", nullptr, nullptr);
        const QImage image = pictureOf(splash);
        QCOMPARE(image.size(), QSize(500, 400));
        for (int i = 0; i < bands.size(); ++i) {
            const int last = i + 1 < bands.size() ? bands[i + 1].first - 1 : 399;
            const QColor color = bands[i].second;
            for (const int y : {bands[i].first, last}) {
                const QColor pixel = image.pixelColor(499, y);
                QVERIFY2(qAbs(pixel.red() - color.red()) <= 1 &&
                             qAbs(pixel.green() - color.green()) <= 1 &&
                             qAbs(pixel.blue() - color.blue()) <= 1,
                         qPrintable(QStringLiteral("row %1 is %2").arg(y).arg(pixel.name())));
            }
        }
    }

    void placesTitleBesideIcon()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath("icon.svg"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 8 8\">"
                   "<rect width=\"8\" height=\"8\" fill=\"#ff0000\"/></svg>");
        file.close();

        const QByteArray path = file.fileName().toUtf8();
        for (const char *icon : {static_cast<const char *>(nullptr), path.constData()}) {
            const SplashScreen splash(background(Qt::black), icon, "1", "HIM", "Subtitle");
            const QImage image = pictureOf(splash);
            QCOMPARE(Ink::rectOfColor(image, Qt::red), icon ? QRect(13, 13, 24, 24) : QRect());
            const QRect title =
                Ink::rectOtherThan(image, QRect(icon ? 40 : 0, 0, 350, 50), Qt::white);
            // a letter stands a little right of where its line begins
            QVERIFY(qAbs(title.left() - (icon ? 53 : 16)) <= 3);
            QVERIFY(qAbs(title.center().y() - 25) <= 3);
            const QRect subtitle = Ink::rectOtherThan(image, QRect(0, 50, 500, 22), Teal);
            QVERIFY(subtitle.left() >= 13 && subtitle.left() <= 16);
            QVERIFY(subtitle.top() > 50 && subtitle.bottom() < 71);
        }
    }

    void keepsTextsApart()
    {
        const SplashScreen splash(background(Qt::black), nullptr, "12.10.3", "Norvu Jpqgy",
                                  nullptr);
        const QImage image = pictureOf(splash);
        // descenders of the title end inside of the header
        QVERIFY(Ink::rectOtherThan(image, QRect(0, 47, 400, 3), Qt::white).isEmpty());
        // a title that is too long ends before the versions
        const SplashScreen wordy(background(Qt::black), nullptr, "1",
                                 "Strong motion of all regions", nullptr);
        QVERIFY(Ink::rectOtherThan(pictureOf(wordy), QRect(320, 0, 80, 50), Qt::white).isEmpty());
        // the logo ends before the maker's line begins
        const QColor foot = image.pixelColor(5, 375);
        QVERIFY(Ink::rectOtherThan(image, QRect(88, 350, 12, 50), foot).isEmpty());
        QVERIFY(Ink::rectOtherThan(image, QRect(13, 365, 75, 20), foot).width() > 70);
    }

    void drawsVersionsAtTheRight()
    {
        const SplashScreen splash(background(Qt::black), nullptr, "123456789", nullptr, nullptr);
        const SplashScreen longer(background(Qt::black), nullptr, "123456789012", nullptr, nullptr);
        const auto inkOf = [](const SplashScreen &screen, int top, int height) {
            return Ink::rectOtherThan(pictureOf(screen), QRect(300, top, 200, height), Qt::white);
        };
        const QRect framework = inkOf(splash, 0, 25);
        const QRect version = inkOf(splash, 26, 23);
        QVERIFY(!framework.isEmpty());
        QVERIFY(!version.isEmpty());
        // both begin at one left edge, which the longer of them puts 13 pixels from the border
        QVERIFY(qAbs(framework.left() - version.left()) <= 2);
        QVERIFY(version.right() >= 484 && version.right() <= 487);
        QVERIFY(inkOf(longer, 0, 25).left() < framework.left() - 10);
        QVERIFY(inkOf(longer, 26, 23).right() <= 487);
    }

    void showsMessageOnStrip()
    {
        SplashScreen splash(background(Qt::black), nullptr, "1", nullptr, nullptr);
        splash.show();
        const QImage before = Ink::picture(splash);
        splash.setMessage(QStringLiteral("Reading stations"));
        const QRect changed = Ink::rectOfDifference(before, Ink::picture(splash));
        QVERIFY(!changed.isEmpty());
        QVERIFY(QRect(QPoint(13, 327), QPoint(486, 348)).contains(changed));
        QVERIFY(qAbs(changed.center().x() - 249) <= 3);
        QTest::mouseClick(&splash, Qt::LeftButton);
        QVERIFY(splash.isVisible());

        SplashScreen bare(QPixmap(), nullptr, "1", "Title", nullptr);
        bare.show();
        bare.setMessage(QStringLiteral("Reading stations"));
    }
};

QTEST_MAIN(SplashScreenTest)
#include "tst_splashscreen.moc"
