// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gradienttesting.h"
#include "ink.h"
#include "rowname.h"

#include <norvu/gui/gradients.h>

#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest>

#include <cmath>

using namespace Norvu::Gui;
using namespace GradientTesting;
using namespace Norvu;
using Tellarix::Gui::Gradient;
using Table = Utils::LUT<double, unsigned int>;

namespace {

constexpr int RightEdge = 100;
constexpr int Height = 40;

Gradient threeStops()
{
    return gradientOf({{0, Qt::red, "low"}, {5, Qt::green}, {10, Qt::blue, "high"}});
}

/** A widget whose keys 0, 5 and 10 stand at x 0, 50 and 100, and what it tells, in order. */
struct Bench
{
    explicit Bench(const Gradient &stops = threeStops()) : gradient(stops), widget(&gradient)
    {
        widget.resize(RightEdge + 1, Height);
        QObject::connect(&widget, &GradientWidget::pointClicked, [this](qreal key, QColor color) {
            log << QStringLiteral("clicked %1 %2").arg(key).arg(color.name());
        });
        QObject::connect(&widget, &GradientWidget::pointDoubleClicked,
                         [this](qreal key, QColor, bool hasKey) {
                             log << QStringLiteral("double %1 %2").arg(key).arg(hasKey);
                             if (!hasKey)
                                 gradient.setColorAt(key, Qt::white);
                         });
        QObject::connect(&widget, &GradientWidget::pointRemoved, [this](qreal key) {
            log << QStringLiteral("removed %1 of %2").arg(key).arg(gradient.size());
        });
        QObject::connect(&widget, &GradientWidget::gradientChanged,
                         [this] { log << QStringLiteral("changed"); });
    }

    /** A point in the middle of the strip of handles. */
    QPoint handle(int x) const { return QPoint(x, widget.height() - 3); }

    void press(int x, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mousePress(&widget, Qt::LeftButton, modifiers, handle(x));
    }
    void release(int x) { QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, handle(x)); }
    void move(int x) { Pointer::move(widget, handle(x), Qt::LeftButton); }
    QStringList takeLog() { return std::exchange(log, {}); }

    /** Colour of a handle's inside. */
    QRgb handleColor(int x) { return Ink::picture(widget).pixel(handle(x)); }

    Gradient gradient;
    GradientWidget widget;
    QStringList log;
};

} // namespace

class GradientWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void mapsKeysAndPixels()
    {
        const Gradient single = gradientOf({{7, Qt::red}});
        const std::tuple<const char *, Gradient, bool, double, int> rows[] = {
            // The span is 15: the last step is as wide as the first.
            {"in steps", threeStops(), false, 7.5, 66},
            {"single stop", single, true, 7.0, 0},
            {"single step", single, false, 7.0, 0},
            {"empty", Gradient(), true, 0.0, -1}};
        for (const auto &[name, gradient, interpolated, keyAt50, lastHandle] : rows) {
            const RowName shown(name);
            Bench bench(gradient);
            bench.widget.setInterpolation(interpolated);
            QCOMPARE(bench.widget.mapPosToKey(50), keyAt50);
            QCOMPARE(bench.widget.findHandle(bench.handle(qMax(0, lastHandle)), true),
                     gradient.size() - 1);
            QCOMPARE(bench.widget.findHandle(QPoint(qMax(0, lastHandle), 5), true), -1);
        }
    }

    void clickSelectsOrRemoves()
    {
        Gradient gradient = threeStops();
        gradient.setColorAt(5.2, Qt::white);
        Bench bench(gradient);
        const auto logOf = [&](int x, int y, Qt::MouseButton button = Qt::LeftButton,
                               Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
            QTest::mouseClick(&bench.widget, button, modifiers, QPoint(x, y));
            return bench.takeLog().join(", ");
        };
        const int y = Height - 3;
        QCOMPARE(logOf(50, 10), QString());
        QCOMPARE(logOf(25, y), QString());
        QCOMPARE(logOf(50, y, Qt::RightButton), QString());
        // Of close handles the left one is hit.
        QCOMPARE(logOf(52, y), QStringLiteral("clicked 5 #00ff00"));
        QCOMPARE(logOf(48, y), QStringLiteral("clicked 5 #00ff00"));
        QCOMPARE(logOf(52, y, Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier),
                 QStringLiteral("clicked 5 #00ff00"));
        QCOMPARE(logOf(52, y, Qt::LeftButton, Qt::ControlModifier),
                 QStringLiteral("removed 5 of 4"));
        QCOMPARE(bench.gradient.keys(), QList<double>({0, 5.2, 10}));
        QCOMPARE(bench.widget.cursor().shape(), Qt::ArrowCursor);
    }

    void dragPassesNeighbours()
    {
        Bench bench;
        bench.press(0);
        bench.move(70);
        // The first key is now 5: the bar spans 5 to 10.
        QCOMPARE(bench.takeLog(),
                 QStringList({"clicked 0 #ff0000", "clicked 7 #ff0000", "changed"}));
        QCOMPARE(bench.gradient.keys(), QList<double>({5, 7, 10}));
        QCOMPARE(bench.gradient.value(7).second, QStringLiteral("low"));
        QCOMPARE(bench.handleColor(40), QColor(Qt::white).rgb());

        bench.release(40);
        bench.move(80);
        QCOMPARE(bench.takeLog(), QStringList());
    }

    void dragDoesNotLandOnAnotherStop()
    {
        Bench bench;
        bench.press(50);
        bench.move(100);
        QCOMPARE(bench.gradient.keys(), QList<double>({0, 5, 10}));
        bench.move(90);
        QCOMPARE(bench.gradient.keys(), QList<double>({0, 9, 10}));
        QCOMPARE(bench.gradient.value(10).first, QColor(Qt::blue));
        QCOMPARE(bench.takeLog(), QStringList({"clicked 5 #00ff00", "clicked 5 #00ff00", "changed",
                                               "clicked 9 #00ff00", "changed"}));

        bench.gradient.remove(9);
        bench.move(30);
        QCOMPARE(bench.takeLog(), QStringList());
    }

    void dragKeepsStopsOfEndlessSpan()
    {
        const Gradient gradient = gradientOf({{-1.5E308, Qt::red}, {1.5E308, Qt::blue}});
        Bench bench(gradient);
        bench.press(0);
        for (int x : {50, 0, 100})
            bench.move(x);
        QCOMPARE(bench.gradient, gradient);
    }

    void doubleClickAsksForPoint()
    {
        Bench bench;
        QTest::mouseDClick(&bench.widget, Qt::LeftButton, Qt::NoModifier, QPoint(25, 10));
        QCOMPARE(bench.takeLog(), QStringList("double 2.5 0"));

        bench.move(50);
        QTest::mouseDClick(&bench.widget, Qt::LeftButton, Qt::NoModifier, bench.handle(50));
        QVERIFY(bench.takeLog().contains("double 5 1"));

        Bench one(gradientOf({{3, Qt::red}}));
        QTest::mouseDClick(&one.widget, Qt::LeftButton, Qt::NoModifier, QPoint(60, 10));
        QCOMPARE(one.takeLog(), QStringList("double 4 0"));
    }

    void tabWalksHandlesAndLeaves()
    {
        Gradient gradient = threeStops();
        QWidget window;
        QVBoxLayout layout(&window);
        QLineEdit before;

        GradientWidget widget(&gradient);
        layout.addWidget(&before);
        layout.addWidget(&widget);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QSignalSpy clicked(&widget, &GradientWidget::pointClicked);

        before.setFocus();
        QTest::keyClick(&before, Qt::Key_Tab);
        QVERIFY(widget.hasFocus());
        QTest::keyClick(&widget, Qt::Key_Tab);
        QTest::keyClick(&widget, Qt::Key_Space);
        QCOMPARE(clicked.takeFirst().first().toDouble(), 5.0);
        QTest::keyClick(&widget, Qt::Key_Backtab);
        QVERIFY(widget.hasFocus());
        QTest::keyClick(&widget, Qt::Key_Backtab);
        QVERIFY(before.hasFocus());
    }

    void paintsBarAndSteps()
    {
        Bench bench;
        QImage image = Ink::picture(bench.widget);
        QCOMPARE(image.pixel(0, 3), QColor(Qt::red).rgb());
        QCOMPARE(image.pixel(25, 3), qRgb(128, 128, 0));
        QCOMPARE(image.pixel(RightEdge, 3), QColor(Qt::blue).rgb());

        bench.widget.setInterpolation(false);
        image = Ink::picture(bench.widget);
        const QRect bar(0, 0, RightEdge + 1, 10);
        const auto columnsOf = [&](QColor color) {
            const QRect ink =
                Ink::rectOf(image, bar, [&](QRgb pixel) { return pixel == color.rgb(); });
            return qMakePair(ink.left(), ink.right());
        };
        QCOMPARE(columnsOf(Qt::red), qMakePair(0, 33));
        QCOMPARE(columnsOf(Qt::green), qMakePair(34, 66));
        QCOMPARE(columnsOf(Qt::blue), qMakePair(67, 100));
    }

    void paintsTransparencyOverCheckerboard()
    {
        const QColor seeThrough(255, 0, 0, 0);
        for (const Gradient &shown : {gradientOf({{0, seeThrough}, {1, seeThrough}}), Gradient()}) {
            Bench bench(shown);
            const QImage image = Ink::picture(bench.widget);
            QCOMPARE(image.pixel(7, 7), QColor(Qt::black).rgb());
            QCOMPARE(image.pixel(8, 7), QColor(Qt::white).rgb());
            QCOMPARE(image.pixel(7, 8), QColor(Qt::white).rgb());
        }
    }

    void mixesBetweenStops()
    {
        const QColor low(0, 100, 200, 0);
        const QColor high(100, 0, 200, 255);
        const std::tuple<const char *, double, QColor, QColor> rows[] = {
            {"below", -5.0, low, low},
            {"between", 2.5, QColor(25, 75, 200, 64), low},
            {"last", 4.0, high, high},
            {"above", 9.0, high, high},
            {"no number", std::nan(""), low, low}};
        for (const auto &[name, key, mixed, stepped] : rows) {
            const RowName shown(name);
            Gradient gradient;
            QVERIFY(!gradient.colorAt(key).isValid());
            gradient.setColorAt(4, QColor(100, 0, 200, 255));
            gradient.setColorAt(2, QColor(0, 100, 200, 0));
            gradient.setColorAt(std::nan(""), Qt::green);
            QCOMPARE(gradient.colorAt(key), mixed);
            QCOMPARE(gradient.colorAt(key, true), stepped);
        }
    }

    void stretchesKeys()
    {
        const Gradient stretched = Gradients::PuRd.rescaled(-1, 0.1);
        QCOMPARE(stretched.size(), Gradients::PuRd.size());
        QCOMPARE(stretched.firstKey(), -1.0);
        QCOMPARE(stretched.lastKey(), 0.1);
        QCOMPARE(stretched.colorAt(-1 + 1.1 * 3 / 8), Gradients::PuRd.colorAt(3));
    }

    void tableClampsAndTruncates()
    {
        const double step = 10.0 / 1023;
        const std::tuple<const char *, double, unsigned int> rows[] = {
            {"less than a step below", 5.0 - 0.9 * step, 0U},
            {"just below an entry", 5.0 + 99.9 * step, 99U},
            {"just above an entry", 5.0 + 100.1 * step, 100U},
            {"last", 15.0, 1023U},
            {"beyond the last", 2E7, 1023U},
            {"beyond integers", 2.2E7, 0U},
            {"no number", std::nan(""), 0U}};
        for (const auto &[name, key, entry] : rows) {
            const RowName shown(name);
            Table table;
            unsigned int next = 0;
            table.fill(5, 15, [&next](double) { return next++; });
            QCOMPARE(table.at(key), entry);
        }
    }

    void tableHoldsTheGradient()
    {
        Table table;
        QVERIFY(!fillTable(table, Gradient()));
        QVERIFY(fillTable(table, Gradients::Default));
        for (int i = 0; i < table._size; ++i)
            QCOMPARE(table._table[i], Gradients::Default.colorAt(i / 1023.0).rgba());
    }

    void tableSurvivesOneStopAndCopies()
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
};

QTEST_MAIN(GradientWidgetTest)
#include "tst_gradientwidget.moc"
