// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gainfilter.h"
#include "ink.h"
#include "ownscheme.h"
#include "pointer.h"
#include "rowname.h"
#include "traces.h"

#include <norvu/gui/gradients.h>
#include <norvu/gui/multitracewidget.h>

#include <tellarix/qt/records/recordmarker.h>

#include <QPainter>

#include <functional>
#include <memory>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::Gui::RecordMarker;
using Tellarix::Gui::RecordWidget;

namespace {

constexpr double Length = 10;

/** A record of integer samples, f(seconds). */
Tellarix::RecordPtr record(double start, double end, const std::function<double(double)> &f)
{
    const int count = static_cast<int>(std::lround((end - start) * SamplingFrequency));
    Tellarix::Core::SmartPointer<Tellarix::IntArray> samples(new Tellarix::IntArray(count));
    for (int i = 0; i < count; ++i)
        samples->typedData()[i] = static_cast<int>(std::lround(f(start + i / SamplingFrequency)));
    return new Tellarix::Record(Tellarix::StreamCodes::FromID("GE.APE..BHZ"), timeAt(start),
                                SamplingFrequency, samples);
}

double constant(double)
{
    return 7;
}

double rising(double seconds)
{
    return 100 * seconds;
}

double falling(double seconds)
{
    return -100 * seconds;
}

double wave(double seconds)
{
    return 1000 * std::sin(2 * M_PI * seconds / 5);
}

/** A view of ten seconds and its overview in place of the rows. */
struct Overview
{
    Overview()
    {
        view.setAlignment(timeAt(0));
        view.resize(800, 400);
        view.show();
        if (!QTest::qWaitForWindowExposed(&view))
            qFatal("The window of the view does not come up");
        view.setTimeRange(0, Length);
        widget = new MultiTraceWidget(&view);
        widget->setActive(true);
        repaint();
    }

    Trace *addRow(const QString &label, const std::function<double(double)> &f,
                  const QColor &color = Qt::black, double end = Length)
    {
        auto *row = Traces::makeRow(label);
        if (f)
            feed(row, 0, record(0, end, f));
        row->recordWidget()->setRecordPen(0, QPen(color, 1));
        view.addItem(row);
        repaint();
        return row;
    }

    QImage repaint()
    {
        QCoreApplication::processEvents();
        return Ink::picture(*widget);
    }

    /** Where traces are drawn, in the widget. */
    QRect area() const
    {
        const int start = view.rulerSpacing() + Trace::Padding();
        if (widget->orientation() == Qt::Horizontal)
            return QRect(QPoint(0, start), QPoint(widget->width() - 1, widget->height() - 1));
        return QRect(QPoint(start, Trace::Padding()),
                     QPoint(widget->width() - 1 - Trace::Padding(), widget->height() - 1));
    }
    /** Pixel of a time along the time axis of the widget. */
    int pixelOf(double seconds) const
    {
        return area().left() + qFloor(seconds * view.timeScale()->scale());
    }

    RecordWidget::TraceInfo info(int row) const
    {
        return *view.itemAt(row)->recordWidget()->traceInfo(0, false);
    }

    void click(double seconds, int y, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(widget, button, Qt::NoModifier, QPoint(pixelOf(seconds), y));
    }
    QStringList selected() const { return labels(view.selectedItems()); }

    TraceView view;
    MultiTraceWidget *widget;
};

} // namespace

class MultiTraceWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsRowsWithoutFilteredRecords()
    {
        Overview overview;
        overview.addRow("A", wave, Qt::red);
        overview.view.setFilterEnabled(true);
        overview.view.setAlignment(timeAt(1));
        const QRect ink = Ink::rectOfColor(overview.repaint(), Qt::red);
        QVERIFY(ink.height() > overview.area().height() * 9 / 10);
        overview.click(5, overview.area().center().y());
        QCOMPARE(overview.selected(), QStringList{"A"});
    }

    void takesThePlaceOfTheRows()
    {
        Overview overview;
        Trace *row = overview.addRow("A", wave);
        MultiTraceWidget &widget = *overview.widget;
        QVERIFY(widget.isVisible() && !row->isVisible());
        widget.setActive(true);
        widget.setActive(false);
        QVERIFY(widget.isHidden() && row->isVisible());

        // What the other one has left in the row must not be painted.
        const auto draws = [&](QWidget &painted) {
            return !Ink::rectOfColor(Ink::picture(painted), Qt::magenta).isNull();
        };
        row->recordWidget()->setRecordPen(0, QPen(Qt::magenta, 1));
        QVERIFY(draws(*row));
        widget.setActive(true);
        QVERIFY(draws(widget));
        delete overview.widget;
        QVERIFY(row->isVisible());

        // The view goes first, and takes both along.
        auto doomed = std::make_unique<Overview>();
        QPointer<Trace> last = doomed->addRow("B", wave);
        QPointer<QWidget> contents = last->parentWidget();
        doomed.reset();
        QVERIFY(last.isNull() && contents.isNull());
    }

    void dividesTheAreaBetweenRows()
    {
        Overview overview;
        overview.addRow("A", constant);
        overview.addRow("no records", nullptr)->recordWidget()->setSlotCount(1);
        overview.addRow("no slot", nullptr);
        overview.addRow("B", constant);
        overview.addRow("C", constant);
        const int size = overview.area().height();
        const auto check = [&](double heightShare, double distanceShare) {
            overview.repaint();
            int index = 0;
            for (const int row : {0, 3, 4}) {
                QVERIFY(qAbs(overview.info(row).height - heightShare * size) <= 1);
                QVERIFY(qAbs(overview.info(row).pos - index * distanceShare * size) <= 1);
                ++index;
            }
        };
        check(1.0 / 3, 1.0 / 3);
        for (int i = 0; i < 5; ++i)
            overview.widget->increaseOverlap();
        check(0.5, 0.25);
        for (int i = 0; i < 7; ++i)
            overview.widget->increaseOverlap();
        check(1, 0);
        QCOMPARE(overview.info(1).height, -1);

        // Of equal traces the first one wins.
        overview.click(5, overview.area().center().y());
        QCOMPARE(overview.selected(), QStringList{"A"});
    }

    void clickSelectsNearestTrace()
    {
        const std::tuple<const char *, int, double, double, QString, QString> rows[] = {
            // Of rows side by side only the one below the pointer counts, however far its trace is;
            // with the rows beside each other, amplitudes grow to the right.
            {"second row", 0, 7.0, 0.60, "falling", "falling"},
            // On top of each other the traces cross in the middle.
            {"upper left", 10, 2.0, 0.2, "falling", "rising"},
            {"lower right", 10, 7.0, 0.8, "falling", "rising"},
            {"in the gap of both", 10, 8.5, 0.5, "", ""}};
        for (const auto &[name, overlapSteps, seconds, share, expected, turned] : rows) {
            const RowName shown(name);
            Overview overview;
            for (int i = 0; i < overlapSteps; ++i)
                overview.widget->increaseOverlap();
            overview.view.setFilter(new GainFilter(1));
            overview.view.setFilterEnabled(true);
            overview.addRow("rising", rising, Qt::black, 8);
            overview.addRow("falling", falling, Qt::black, 8);
            for (const bool isFiltered : {true, false}) {
                overview.view.setFilterEnabled(isFiltered);
                overview.repaint();
                overview.view.clearSelection();
                const QRect area = overview.area();
                overview.click(seconds, area.top() + static_cast<int>(share * area.height()));
                QCOMPARE(overview.selected().join(','), expected);
            }

            overview.widget->setOrientation(Qt::Horizontal);
            overview.repaint();
            overview.view.clearSelection();
            const QRect area = overview.area();
            const int length = area.height() - overview.view.rulerSpacing();
            QTest::mouseClick(overview.widget, Qt::LeftButton, Qt::NoModifier,
                              QPoint(static_cast<int>(share * area.width()),
                                     area.top() + static_cast<int>(seconds / Length * length)));
            QCOMPARE(overview.selected().join(','), turned);
        }
    }

    void dragSelectsAgain()
    {
        Overview overview;
        overview.addRow("A", constant);
        overview.addRow("B", constant);
        const QRect area = overview.area();
        const QPoint inA(area.center().x(), area.top() + area.height() / 4);
        const QPoint inB(area.center().x(), area.top() + area.height() * 3 / 4);

        QTest::mouseClick(overview.widget, Qt::RightButton, Qt::NoModifier, inA);
        QCOMPARE(overview.selected(), QStringList());
        QTest::mousePress(overview.widget, Qt::LeftButton, Qt::NoModifier, inA);
        QCOMPARE(overview.selected(), QStringList{"A"});
        Pointer::move(*overview.widget, inB, Qt::LeftButton);
        QCOMPARE(overview.selected(), QStringList{"B"});
        QTest::mouseRelease(overview.widget, Qt::LeftButton, Qt::NoModifier, inB);
        Pointer::move(*overview.widget, inA);
        QCOMPARE(overview.selected(), QStringList{"B"});
        QVERIFY(!overview.view.itemAt(0)->isSelected());
    }

    void turnsTracesClockwise()
    {
        Overview overview;
        overview.view.resize(800, 800);
        overview.addRow(
            "", [](double seconds) { return seconds < 2 ? 1000 : 0; }, Qt::red);
        overview.addRow("", constant, Qt::green);
        overview.widget->setOrientation(Qt::Horizontal);
        const QImage picture = overview.repaint();
        const QRect area = overview.area();

        // The step up of the first two seconds lies on the right, at the top.
        const QRect upper(area.left(), area.top(), area.width(), area.height() / 10);
        const QRect lower(area.left(), area.center().y(), area.width(), area.height() / 10);
        const auto isRed = [](QRgb pixel) { return pixel == QColor(Qt::red).rgb(); };
        QVERIFY(qAbs(Ink::rectOf(picture, upper, isRed).left() - area.width() / 2) <= 2);
        QVERIFY(Ink::rectOf(picture, lower, isRed).right() <= 1);
        const QRect second = Ink::rectOfColor(picture, Qt::green);
        QVERIFY(qAbs(second.left() - area.width() * 3 / 4) <= 2);
        QCOMPARE(second.width(), 1);
    }

    void normalizesRows()
    {
        Overview overview;
        overview.addRow(
            "", [](double seconds) { return wave(seconds) * (seconds < Length ? 1 : 10); }, Qt::red,
            2 * Length);
        overview.addRow(
            "", [](double seconds) { return wave(seconds) / 4; }, Qt::green);
        const int rowHeight = overview.area().height() / 2;
        const auto fits = [&](const QColor &color, int height) {
            return qAbs(Ink::rectOfColor(overview.repaint(), color).height() - height) < 4;
        };
        QVERIFY(fits(Qt::red, rowHeight) && fits(Qt::green, rowHeight));
        overview.view.setAllTracesNormalization(true);
        QVERIFY(fits(Qt::red, rowHeight) && fits(Qt::green, rowHeight / 4));
        // Twice the amplitude.
        overview.widget->increaseAmpScale();
        overview.widget->increaseAmpScale();
        QVERIFY(fits(Qt::green, rowHeight / 2));
        overview.widget->decreaseAmpScale();
        overview.widget->decreaseAmpScale();
        overview.view.setAllTracesNormalization(false);
        overview.view.setWindowNormalization(false);
        QVERIFY(fits(Qt::red, rowHeight / 10));
    }

    void turnsRowsOfReversedPolarityOver()
    {
        Overview overview;
        overview.addRow("", falling, Qt::green)->recordWidget()->setRecordScale(0, -1);
        // By itself a row shows its samples, as its own widget does.
        for (const bool isCommon : {false, true}) {
            overview.view.setAllTracesNormalization(isCommon);
            const QRect start(overview.area().topLeft(), QSize(20, overview.area().height()));
            const QRect ink = Ink::rectOfColor(overview.repaint().copy(start), Qt::green);
            QCOMPARE(ink.top() > 20, isCommon);
        }
        overview.view.itemAt(0)->recordWidget()->setTracesPale(true);
        QVERIFY(Ink::rectOfColor(overview.repaint(), Qt::green).isNull());
    }

    void fillsLobesOnlyWithWiggles()
    {
        OwnScheme scheme;
        for (const bool antiAliasing : {false, true}) {
            scheme->records.antiAliasing = antiAliasing;
            Overview overview;
            Trace *row = overview.addRow("", wave);
            const auto inkOf = [&](const QColor &color, double from, double to) {
                const QRect area = overview.area();
                const QImage part =
                    overview.repaint().copy(QRect(QPoint(overview.pixelOf(from), area.top()),
                                                  QPoint(overview.pixelOf(to), area.bottom())));
                return Ink::rectOfColor(part, color);
            };
            QVERIFY(inkOf(red, 0, Length).isNull() && inkOf(blue, 0, Length).isNull());

            overview.widget->setWigglesShown(true);
            const int height = overview.area().height();
            const QRect above = inkOf(red, 5, 7.5);
            const QRect below = inkOf(blue, 7.5, 10);
            QVERIFY(above.height() > height * 4 / 10 && above.bottom() < height / 2 + 3);
            QVERIFY(below.height() > height * 4 / 10 && below.top() > height / 2 - 3);

            // The offset of a trace moves the line of its lobes: here to the top of the row.
            row->recordWidget()->records(0)->clear();
            feed(row, 0, record(0, Length, [](double seconds) { return wave(seconds) + 1000; }));
            QVERIFY(inkOf(red, 0, Length).height() <= 2);
            QVERIFY(inkOf(blue, 0, Length).height() > height * 9 / 10);
        }
    }

    void drawsGridAtTicks()
    {
        OwnScheme scheme;
        scheme->records.gridMinor = QPen(Qt::yellow, 1);
        Overview overview;
        const Tellarix::Gui::TimeScale &scale = *overview.view.timeScale();
        const auto columns = [&] {
            const QImage picture = overview.repaint();
            QVector<int> found;
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixel(x, 100) == QColor(Qt::yellow).rgb())
                    found.append(x);
            }
            return found;
        };

        // Ticks stand at whole times of day, not at whole seconds from here.
        overview.view.setAlignment(timeAt(100.7));
        QVERIFY(scale.offset() != 0);
        for (const double start : {0.0, 0.3}) {
            overview.view.setTimeRange(start, start + Length);
            QVector<int> expected;
            for (const double tick : Tellarix::Gui::tickValues(
                     scale.lower(), scale.upper(), scale.minorSpacing(), scale.offset())) {
                const double x = overview.area().left() + (tick - scale.lower()) * scale.scale();
                if (x < overview.area().right())
                    expected.append(static_cast<int>(x + 1E-6));
            }
            QCOMPARE(columns(), expected);
        }
    }

    void drawsMarkers()
    {
        Overview overview;
        overview.addRow("A", constant);
        Trace *row = overview.addRow("B", constant);
        overview.addRow("C", constant);
        const auto add = [&](double seconds, const QColor &color, Qt::Alignment alignment = {}) {
            auto *marker = new RecordMarker(timeAt(seconds));
            marker->setColor(color);
            marker->setAlignment(alignment);
            row->recordWidget()->addMarker(marker);
            return marker;
        };
        add(4, Qt::magenta);
        add(5, Qt::yellow, Qt::AlignTop);
        add(7, Qt::darkGreen, Qt::AlignBottom);
        add(-0.5, Qt::darkBlue);
        RecordMarker *moved = add(2, Qt::cyan);
        moved->setMovable(true);
        moved->setModifiedColor(Qt::green);
        moved->setCorrectedTime(timeAt(3));
        const QImage picture = overview.repaint();

        const double height = overview.area().height() / 3.0;
        const double top = overview.area().top() + height;
        const auto stands = [&](const QColor &color, double seconds, double from, double to) {
            const QRect ink = Ink::rectOfColor(picture, color);
            return ink.left() == overview.pixelOf(seconds) && ink.width() == 1 &&
                   qAbs(ink.top() - (top + from * height)) <= 2 &&
                   qAbs(ink.bottom() - (top + to * height)) <= 2;
        };
        QVERIFY(stands(Qt::magenta, 4, 0, 1));
        QVERIFY(stands(Qt::yellow, 5, 0, 0.5));
        QVERIFY(stands(Qt::darkGreen, 7, 0.5, 1));
        QVERIFY(stands(Qt::green, 3, 0, 1));
        QVERIFY(overview.pixelOf(-0.5) > 0 && stands(Qt::darkBlue, -0.5, 0, 1));
        QVERIFY(Ink::rectOfColor(picture, Qt::cyan).isNull()); // moved on
    }

    void scaleBesideRulesTimeThatRunsDown()
    {
        OwnScheme scheme;
        scheme->records.gridMajor = QPen(Qt::yellow, 1);
        scheme->records.gridMinor = QPen(Qt::transparent, 1);
        Overview overview;
        // A row that begins at 5 s with a marker there.
        Trace *row = overview.addRow("A", nullptr, Qt::red);
        feed(row, 0, record(5, Length, constant));
        auto *marker = new RecordMarker(timeAt(5));
        marker->setColor(Qt::magenta);
        row->recordWidget()->addMarker(marker);
        overview.addRow("B", constant);
        Tellarix::Gui::TimeScale scale(overview.widget, Qt::WindowFlags(),
                                       Tellarix::Gui::Ruler::Left);
        scale.setAutoScaleEnabled(true);
        scale.setRange(Length, 0);
        overview.widget->setContentsMargins(50, 0, 0, 30);
        overview.widget->setTurnedTimeScale(&scale);
        overview.widget->setOrientation(Qt::Horizontal);
        overview.repaint();
        const QRect area = overview.widget->drawingArea();
        scale.setGeometry(0, area.top(), 50, area.height());
        scale.show();
        const QImage picture = overview.repaint();
        const QImage ticks = Ink::picture(scale);

        // Every line stands at a tick, and there are some.
        int lines = 0;
        for (int y = 0; y < area.height(); ++y) {
            if (picture.pixelColor(area.right() - 2, area.top() + y) != QColor(Qt::yellow))
                continue;
            ++lines;
            QVERIFY(ticks.pixelColor(scale.width() - 3, y).lightness() < 128);
        }
        QVERIFY(lines >= 3);
        const int five = static_cast<int>(overview.widget->pixelOf(5));
        QVERIFY(qAbs(five - area.center().y()) <= 1);
        QVERIFY(qAbs(Ink::rectOfColor(picture, Qt::red).top() - five) <= 1);
        const QRect line = Ink::rectOfColor(picture, Qt::magenta);
        QVERIFY(line.height() == 1 && line.width() > area.width() / 3 &&
                line.right() <= area.center().x() + 1);
        QVERIFY(line.top() == five && area.left() == 50 &&
                area.bottom() == overview.widget->height() - 31);
    }

    void placesRowsWhereTheHostWantsThem()
    {
        Overview overview;
        const QStringList labels{"0.25", "none", "0.75"};
        for (const QString &label : labels)
            overview.addRow(
                label, [](double seconds) { return seconds < 1 ? 30 : 10; }, Qt::red);
        overview.widget->setPlacement([](const Trace &row) {
            bool isNumber = false;
            const double share = row.label().toDouble(&isNumber);
            return isNumber ? std::optional<double>(share) : std::nullopt;
        });
        const QImage picture = overview.repaint();
        const QRect area = overview.area();
        // The mean stands at the place: the long lower part of the trace is just below.
        const QRect late(overview.pixelOf(5), 0, 10, picture.height());
        const QRect ink =
            Ink::rectOf(picture, late, [](QRgb pixel) { return pixel == QColor(Qt::red).rgb(); });
        const int height = overview.info(0).height;
        QVERIFY(ink.top() > area.top() + area.height() / 4 &&
                ink.top() < area.top() + area.height() / 4 + height / 6);
        QVERIFY(qAbs(ink.height() - area.height() / 2) <= 2);
        QVERIFY(overview.widget->rowRect(overview.view.itemAt(1)).isEmpty());
        overview.click(5, area.top() + area.height() * 3 / 4);
        QCOMPARE(overview.selected(), QStringList("0.75"));
        QVERIFY(overview.widget->sampleValueAt(overview.view.itemAt(2), QPoint(0, ink.bottom())) -
                    10 <
                2);
        // Without places rows are divided as ever.
        overview.widget->setPlacement({});
        overview.repaint();
        QCOMPARE(overview.info(1).pos, area.height() / 3);
    }

    void showsRecordsThatArrive()
    {
        Overview overview;
        overview.addRow("", wave, Qt::green);
        Trace *row = overview.addRow("", nullptr, Qt::red);
        QVERIFY(Ink::rectOfColor(overview.repaint(), Qt::red).isNull());
        feed(row, 0, record(0, 3, wave));
        QTRY_VERIFY(!Ink::rectOfColor(overview.repaint(), Qt::red).isNull());
        // The other row has made room.
        QVERIFY(Ink::rectOfColor(overview.repaint(), Qt::green).bottom() <=
                overview.area().center().y() + 1);
        feed(row, 0, record(3, 6, wave));
        QTRY_VERIFY(Ink::rectOfColor(overview.repaint(), Qt::red).right() >= overview.pixelOf(5.8));
    }
};

QTEST_MAIN(MultiTraceWidgetTest)
#include "tst_multitracewidget.moc"
