#include <norvu/gui/gradients.h>

#include <QPushButton>
#include <QtTest>

#include <cmath>

using namespace Norvu;
using namespace Norvu::Gui;
using Tellarix::Gui::Gradient;

using Table = Utils::LUT<double, unsigned int>;

class TestGradients : public QObject
{
    Q_OBJECT

private slots:
    void haveTheirKeys_data();
    void haveTheirKeys();
    void registryIsSorted();
    void mixesBetweenStops_data();
    void mixesBetweenStops();
    void stretchesKeys();
    void tableClampsAndTruncates_data();
    void tableClampsAndTruncates();
    void tableHoldsTheGradient();
    void tableSurvivesOneStopAndCopies();
    void buttonTextCanBeRead_data();
    void buttonTextCanBeRead();
    void generatesColors();
};

void TestGradients::haveTheirKeys_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("stops");
    QTest::addColumn<double>("last");
    QTest::addColumn<QColor>("middle");

    QTest::newRow("fades out") << "Default" << 6 << 1.0 << QColor(0, 0, 255, 128);
    QTest::newRow("sevenths") << "Inferno" << 8 << 1.0 << QColor(48, 7, 84);
    QTest::newRow("skips a key") << "PuRd" << 8 << 8.0 << QColor(231, 225, 239);
    QTest::newRow("hue wheel") << "Circle" << 13 << 12.0 << QColor(255, 128, 0);
    QTest::newRow("tenths") << "Parula" << 11 << 1.0 << QColor(53, 42, 135);
}

void TestGradients::haveTheirKeys()
{
    QFETCH(QString, name);
    QFETCH(int, stops);
    QFETCH(double, last);
    QFETCH(QColor, middle);

    const Gradient *gradient = Gradients::Registry.value(name);
    QVERIFY(gradient);
    QCOMPARE(gradient->size(), stops);
    QCOMPARE(gradient->firstKey(), 0.0);
    QCOMPARE(gradient->lastKey(), last);
    QCOMPARE(std::next(gradient->begin())->first, middle);
    QVERIFY(!gradient->contains(7) || name == "Circle");
}

void TestGradients::registryIsSorted()
{
    QCOMPARE(
        QStringList(Gradients::Registry.keys()),
        QStringList({"BlackBody", "BlackWhite", "Blues", "BuPu", "Circle", "Default", "Inferno",
                     "Parula", "Plasma", "PuRd", "RdYlBu", "Spectrum", "Viridis", "WhiteBlack"}));
    QVERIFY(!Gradients::Registry.value("unknown"));
}

void TestGradients::mixesBetweenStops_data()
{
    QTest::addColumn<double>("key");
    QTest::addColumn<QColor>("mixed");
    QTest::addColumn<QColor>("stepped");

    const QColor low(0, 100, 200, 0);
    const QColor high(100, 0, 200, 255);
    QTest::newRow("below") << -5.0 << low << low;
    QTest::newRow("first") << 2.0 << low << low;
    QTest::newRow("between") << 2.5 << QColor(25, 75, 200, 64) << low;
    QTest::newRow("last") << 4.0 << high << high;
    QTest::newRow("above") << 9.0 << high << high;
    QTest::newRow("no number") << std::nan("") << low << low;
}

void TestGradients::mixesBetweenStops()
{
    QFETCH(double, key);
    QFETCH(QColor, mixed);
    QFETCH(QColor, stepped);

    Gradient gradient;
    QVERIFY(!gradient.colorAt(key).isValid());
    gradient.setColorAt(4, QColor(100, 0, 200, 255));
    gradient.setColorAt(2, QColor(0, 100, 200, 0));
    gradient.setColorAt(std::nan(""), Qt::green);
    QCOMPARE(gradient.colorAt(key), mixed);
    QCOMPARE(gradient.colorAt(key, true), stepped);
}

void TestGradients::stretchesKeys()
{
    const Gradient stretched = Gradients::PuRd.rescaled(-1, 0.1);
    QCOMPARE(stretched.size(), Gradients::PuRd.size());
    QCOMPARE(stretched.firstKey(), -1.0);
    QCOMPARE(stretched.lastKey(), 0.1);
    QCOMPARE(stretched.colorAt(-1 + 1.1 * 3 / 8), Gradients::PuRd.colorAt(3));
}

void TestGradients::tableClampsAndTruncates_data()
{
    QTest::addColumn<double>("key");
    QTest::addColumn<unsigned int>("entry");

    const double step = 10.0 / 1023;
    QTest::newRow("first") << 5.0 << 0U;
    QTest::newRow("less than a step below") << 5.0 - 0.9 * step << 0U;
    QTest::newRow("far below") << -1E6 << 0U;
    QTest::newRow("just below an entry") << 5.0 + 99.9 * step << 99U;
    QTest::newRow("just above an entry") << 5.0 + 100.1 * step << 100U;
    QTest::newRow("last") << 15.0 << 1023U;
    QTest::newRow("above") << 20.0 << 1023U;
    QTest::newRow("beyond integers") << 1E300 << 0U;
    QTest::newRow("no number") << std::nan("") << 0U;
}

void TestGradients::tableClampsAndTruncates()
{
    QFETCH(double, key);
    QFETCH(unsigned int, entry);

    Table table;
    unsigned int next = 0;
    table.fill(5, 15, [&next](double) { return next++; });
    QCOMPARE(table.at(key), entry);
}

void TestGradients::tableHoldsTheGradient()
{
    Table table;
    QVERIFY(!fillTable(table, Gradient()));
    QVERIFY(fillTable(table, Gradients::Default));
    for (int i = 0; i < table._size; ++i)
        QCOMPARE(table._table[i], Gradients::Default.colorAt(i / 1023.0).rgba());

    fillTable(table, Gradients::Blues, true);
    QCOMPARE(table.at(7.9), Gradients::Blues.value(6).first.rgba());
}

void TestGradients::tableSurvivesOneStopAndCopies()
{
    Gradient single;
    single.setColorAt(3, Qt::red);
    Table table;
    fillTable(table, single);
    QCOMPARE(table.at(3), QColor(Qt::red).rgba());

    fillTable(table, Gradients::Viridis);
    const Table copy(table);
    fillTable(table, Gradients::BlackWhite);
    QCOMPARE(copy.at(1), Gradients::Viridis.colorAt(1).rgba());
}

void TestGradients::buttonTextCanBeRead_data()
{
    QTest::addColumn<int>("grey");
    QTest::addColumn<QColor>("text");

    QTest::newRow("just dark") << 160 << QColor(Qt::white);
    QTest::newRow("just light") << 161 << QColor(Qt::black);
}

void TestGradients::buttonTextCanBeRead()
{
    QFETCH(int, grey);
    QFETCH(QColor, text);

    QPushButton button;
    setColor(&button, QColor(grey, grey, grey), true, Qt::red);
    QCOMPARE(button.palette().color(QPalette::ButtonText), text);
    QCOMPARE(button.palette().color(QPalette::Button), QColor(grey, grey, grey));
    setColor(&button, QColor(grey, grey, grey), false, Qt::red);
    QCOMPARE(button.palette().color(QPalette::Disabled, QPalette::ButtonText), QColor(Qt::red));
}

void TestGradients::generatesColors()
{
    QCOMPARE(generateColor(0, 200, 100).hue(), 0);
    QCOMPARE(generateColor(1, 200, 100).hue(), 221);
    QVERIFY(generateColorF(0, 0.5, 1).isValid());
    QTest::ignoreMessage(QtWarningMsg, "QColor::fromHsvF: HSV parameters out of range");
    QVERIFY(!generateColorF(1, 0.5, 1).isValid());
}

QTEST_MAIN(TestGradients)
#include "tst_gradients.moc"
