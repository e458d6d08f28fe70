#include "norvu/ink.h"

#include <norvu/gui/fontawesome5.h>

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QMap>
#include <QPainter>
#include <QRawFont>
#include <QRegularExpression>
#include <QToolButton>
#include <QtTest>

namespace Icons = Norvu::FontAwesome5;

using Table = QMap<QString, uint>;

Q_DECLARE_METATYPE(QIcon::Mode)

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

/** The constants that the public header declares. */
Table declaredConstants()
{
    Table result;
    QFile header(QFINDTESTDATA("../../libs/norvu/gui/fontawesome5.h"));
    if (!header.open(QIODevice::ReadOnly))
        return result;

    const QRegularExpression constant(
        QStringLiteral("constexpr QChar (ch\\w+)\\(0x([0-9a-f]{4})\\);"));
    auto matches = constant.globalMatch(QString::fromUtf8(header.readAll()));
    while (matches.hasNext()) {
        const auto match = matches.next();
        result.insert(match.captured(1), match.captured(2).toUInt(nullptr, 16));
    }
    return result;
}

} // namespace

class FontAwesome5Test : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void findsFaces_data();
    void findsFaces();
    void hasGlyphsOfLibrary();
    void declaresWholeTable();
    void takesColorByMode_data();
    void takesColorByMode();
    void showsStateOfCheckedButton();
    void sizesGlyphByBox_data();
    void sizesGlyphByBox();
    void leavesMissingGlyphsBlank();
};

void FontAwesome5Test::init()
{
    QPalette colors;
    colors.setColor(QPalette::Active, QPalette::Text, QColor(200, 0, 0));
    colors.setColor(QPalette::Inactive, QPalette::Text, QColor(0, 200, 0));
    colors.setColor(QPalette::Disabled, QPalette::Text, QColor(0, 0, 200));
    colors.setColor(QPalette::HighlightedText, QColor(200, 200, 0));
    QApplication::setPalette(colors);
}

void FontAwesome5Test::findsFaces_data()
{
    QTest::addColumn<QFont>("font");
    QTest::addColumn<QString>("family");
    QTest::addColumn<QString>("style");
    QTest::addColumn<int>("weight");

    const QString pro = QStringLiteral("Font Awesome 5 Pro");
    QTest::newRow("regular") << Icons::font() << pro << "Regular" << int(QFont::Normal);
    QTest::newRow("solid") << Icons::fontSolid() << pro << "Solid" << int(QFont::Black);
    QTest::newRow("light") << Icons::fontLight() << pro << "Light" << int(QFont::Light);
    QTest::newRow("brands") << Icons::fontBrands() << "Font Awesome 5 Brands"
                            << "Regular" << int(QFont::Normal);
}

void FontAwesome5Test::findsFaces()
{
    QFETCH(QFont, font);
    QFETCH(QString, family);
    QFETCH(QString, style);
    QFETCH(int, weight);

    // A font database hands out the application's font for a face that it doesn't have.
    QVERIFY(QFontDatabase().styles(family).contains(style));
    QCOMPARE(font.pointSize(), 10);
    font.setPixelSize(64);
    const QFontInfo info(font);
    QVERIFY(info.exactMatch());
    QCOMPARE(info.family(), family);
    QCOMPARE(info.styleName(), style);
    QCOMPARE(info.weight(), weight);
}

void FontAwesome5Test::hasGlyphsOfLibrary()
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
            QVERIFY2(
                height > 64 / 3 && height <= 80,
                qPrintable(QStringLiteral("U+%1: %2 rows").arg(ch.unicode(), 4, 16).arg(height)));
        }
    }
}

void FontAwesome5Test::declaresWholeTable()
{
    const Table constants = declaredConstants();
    QCOMPARE(constants.size(), 2299);
    const QList<uint> codes = constants.values();
    QCOMPARE(QSet<uint>(codes.begin(), codes.end()).size(), 2299);

    // Names with digits and words of one letter, and the ends of the table.
    const QPair<QChar, int> published[] = {
        {Icons::chGlassMartini, 0xf000},  {Icons::chUnsplash, 0xf97c},
        {Icons::chYCombinator, 0xf23b},   {Icons::chCss3Alt, 0xf38b},
        {Icons::chDraft2digital, 0xf396}, {Icons::ch500px, 0xf26e},
        {Icons::chDiceD10, 0xf6cd},       {Icons::chH1, 0xf313},
    };
    for (const auto &[constant, code] : published)
        QCOMPARE(int(constant.unicode()), code);
}

void FontAwesome5Test::takesColorByMode_data()
{
    QTest::addColumn<QIcon::Mode>("mode");
    QTest::addColumn<QColor>("color");

    QTest::newRow("normal") << QIcon::Normal << QColor(200, 0, 0);
    QTest::newRow("active") << QIcon::Active << QColor(200, 0, 0);
    QTest::newRow("selected") << QIcon::Selected << QColor(200, 0, 0);
    QTest::newRow("disabled") << QIcon::Disabled << QColor(0, 0, 200);
}

void FontAwesome5Test::takesColorByMode()
{
    QFETCH(QIcon::Mode, mode);
    QFETCH(QColor, color);

    const QPixmap pixmap = Icons::iconSolid(Icons::chSquare).pixmap(QSize(64, 64), mode);
    QVERIFY(holds(flat(pixmap), color));
    QCOMPARE(qAlpha(pixmap.toImage().pixel(0, 0)), 0);

    const QIcon fixed = Icons::iconSolid(Icons::chSquare, Qt::magenta);
    QVERIFY(holds(flat(fixed.pixmap(QSize(64, 64), mode)), Qt::magenta));

    // The icon follows a palette that is set later.
    const QIcon icon = Icons::iconSolid(Icons::chSquare);
    QPalette gray;
    gray.setColor(QPalette::Text, Qt::darkGray);
    QApplication::setPalette(gray);
    QVERIFY(holds(flat(icon.pixmap(QSize(64, 64), mode)), Qt::darkGray));
}

void FontAwesome5Test::showsStateOfCheckedButton()
{
    QToolButton button;
    button.setAutoRaise(true);
    button.setCheckable(true);
    button.setIconSize(QSize(48, 48));
    button.resize(60, 60);
    button.setIcon(
        Icons::iconSolid(Icons::chSquare, Icons::chCircle, QColor(Qt::magenta), QColor(Qt::cyan)));
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

void FontAwesome5Test::sizesGlyphByBox_data()
{
    QTest::addColumn<QSize>("box");
    QTest::addColumn<int>("pixelSize");

    QTest::newRow("square") << QSize(16, 16) << 12;
    QTest::newRow("high") << QSize(40, 100) << 32;
    QTest::newRow("just below five to four") << QSize(124, 100) << 99;
    QTest::newRow("below only when truncated") << QSize(249, 200) << 199;
    QTest::newRow("five to four") << QSize(20, 16) << 16;
    QTest::newRow("wide") << QSize(100, 40) << 40;
}

void FontAwesome5Test::sizesGlyphByBox()
{
    QFETCH(QSize, box);
    QFETCH(int, pixelSize);

    const QIcon icon = Icons::icon(Icons::chCalendarAlt, Qt::black);
    QCOMPARE(flat(icon.pixmap(box)), glyph(Icons::font(), pixelSize, box, Icons::chCalendarAlt));
}

void FontAwesome5Test::leavesMissingGlyphsBlank()
{
    const QImage image = flat(Icons::icon(Icons::chGithub, Qt::black).pixmap(QSize(64, 64)));
    QVERIFY(Ink::rectOtherThan(image, image.rect(), Qt::white).isEmpty());
    QVERIFY(
        holds(flat(Icons::iconBrand(Icons::chGithub, Qt::black).pixmap(QSize(64, 64))), Qt::black));
}

QTEST_MAIN(FontAwesome5Test)
#include "tst_fontawesome5.moc"
