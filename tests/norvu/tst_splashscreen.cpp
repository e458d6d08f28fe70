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
    void laysBandsOverPicture_data();
    void laysBandsOverPicture();
    void placesTitleBesideIcon_data();
    void placesTitleBesideIcon();
    void leavesMissingTextsOut();
    void keepsTextsApart();
    void drawsVersionsAtTheRight();
    void showsMessageOnStrip();
    void staysWhenClicked();
    void acceptsNoPicture();
};

void SplashScreenTest::laysBandsOverPicture_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<QColor>("color");

    QTest::newRow("header") << 0 << 49 << QColor(Qt::white);
    QTest::newRow("bar") << 50 << 71 << Teal;
    QTest::newRow("picture") << 72 << 327 << QColor(200, 100, 0);
    // four fifths of white or dark over the picture
    QTest::newRow("message strip") << 328 << 349 << QColor(244, 224, 204);
    QTest::newRow("foot") << 350 << 399 << QColor(40, 57, 45);
}

void SplashScreenTest::laysBandsOverPicture()
{
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(QColor, color);

    const SplashScreen splash(background(QColor(200, 100, 0)), nullptr, "1", nullptr, nullptr);
    const QImage image = pictureOf(splash);
    QCOMPARE(image.size(), QSize(500, 400));
    for (int x : {0, 499}) {
        for (int y = first; y <= last; ++y) {
            const QColor pixel = image.pixelColor(x, y);
            QVERIFY2(qAbs(pixel.red() - color.red()) <= 1 &&
                         qAbs(pixel.green() - color.green()) <= 1 &&
                         qAbs(pixel.blue() - color.blue()) <= 1,
                     qPrintable(QStringLiteral("(%1, %2) is %3").arg(x).arg(y).arg(pixel.name())));
        }
    }
}

void SplashScreenTest::placesTitleBesideIcon_data()
{
    QTest::addColumn<bool>("icon");
    QTest::addColumn<int>("left");

    QTest::newRow("without icon") << false << 13;
    QTest::newRow("with icon") << true << 50;
}

void SplashScreenTest::placesTitleBesideIcon()
{
    QFETCH(bool, icon);
    QFETCH(int, left);

    QTemporaryDir folder;
    const QString path = folder.filePath("icon.svg");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 8 8\">"
               "<rect width=\"8\" height=\"8\" fill=\"#ff0000\"/></svg>");
    file.close();

    const QByteArray iconPath = path.toUtf8();
    const SplashScreen splash(background(Qt::black), icon ? iconPath.constData() : nullptr, "1",
                              "HIM", nullptr);
    const QImage image = pictureOf(splash);
    QCOMPARE(Ink::rectOfColor(image, Qt::red), icon ? QRect(13, 13, 24, 24) : QRect());

    const QRect ink = Ink::rectOtherThan(image, QRect(icon ? 40 : 0, 0, 350, 50), Qt::white);
    QVERIFY(!ink.isEmpty());
    // a letter stands a little right of where its line begins
    QVERIFY2(ink.left() >= left && ink.left() <= left + 6, QByteArray::number(ink.left()));
    QVERIFY(qAbs(ink.center().y() - 25) <= 3);
}

void SplashScreenTest::leavesMissingTextsOut()
{
    const QRect header(0, 0, 400, 50);
    const QRect bar(0, 50, 500, 22);

    const SplashScreen bare(background(Qt::black), nullptr, "1", nullptr, nullptr);
    QVERIFY(Ink::rectOtherThan(pictureOf(bare), header, Qt::white).isEmpty());
    QVERIFY(Ink::rectOtherThan(pictureOf(bare), bar, Teal).isEmpty());

    const SplashScreen full(background(Qt::black), nullptr, "1", "Title", "Subtitle");
    QVERIFY(!Ink::rectOtherThan(pictureOf(full), header, Qt::white).isEmpty());
    const QRect subtitle = Ink::rectOtherThan(pictureOf(full), bar, Teal);
    QVERIFY(subtitle.left() >= 13 && subtitle.left() <= 16);
    QVERIFY(subtitle.top() > 50 && subtitle.bottom() < 71);
}

void SplashScreenTest::keepsTextsApart()
{
    const SplashScreen splash(background(Qt::black), nullptr, "12.10.3", "Norvu Jpqgy", nullptr);
    const QImage image = pictureOf(splash);
    // descenders of the title end inside of the header
    QVERIFY(Ink::rectOtherThan(image, QRect(0, 47, 400, 3), Qt::white).isEmpty());
    // a title that is too long ends before the versions
    const SplashScreen wordy(background(Qt::black), nullptr, "1", "Strong motion of all regions",
                             nullptr);
    QVERIFY(Ink::rectOtherThan(pictureOf(wordy), QRect(320, 0, 80, 50), Qt::white).isEmpty());
    // the logo ends before the maker's line begins
    const QColor foot = image.pixelColor(5, 375);
    QVERIFY(Ink::rectOtherThan(image, QRect(88, 350, 12, 50), foot).isEmpty());
    QVERIFY(Ink::rectOtherThan(image, QRect(13, 365, 75, 20), foot).width() > 70);
}

void SplashScreenTest::drawsVersionsAtTheRight()
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

void SplashScreenTest::showsMessageOnStrip()
{
    SplashScreen splash(background(Qt::black), nullptr, "1", nullptr, nullptr);
    splash.show();
    const QImage before = Ink::picture(splash);
    splash.setMessage(QStringLiteral("Reading stations"));
    const QImage after = Ink::picture(splash);

    QRect changed;
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x) {
            if (after.pixel(x, y) != before.pixel(x, y))
                changed |= QRect(x, y, 1, 1);
        }
    }
    QVERIFY(!changed.isEmpty());
    QVERIFY(QRect(QPoint(13, 327), QPoint(486, 348)).contains(changed));
    QVERIFY(qAbs(changed.center().x() - 249) <= 3);

    splash.setMessage(QString());
    QCOMPARE(Ink::picture(splash), before);
}

void SplashScreenTest::staysWhenClicked()
{
    SplashScreen splash(background(Qt::black), nullptr, "1", nullptr, nullptr);
    splash.show();
    QVERIFY(QTest::qWaitForWindowExposed(&splash));
    QTest::mouseClick(&splash, Qt::LeftButton);
    QVERIFY(splash.isVisible());
}

void SplashScreenTest::acceptsNoPicture()
{
    SplashScreen splash(QPixmap(), nullptr, "1", "Title", nullptr);
    splash.show();
    splash.setMessage(QStringLiteral("Reading stations"));
    QCOMPARE(splash.pixmap().width(), 0);
}

QTEST_MAIN(SplashScreenTest)
#include "tst_splashscreen.moc"
