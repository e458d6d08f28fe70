// SPDX-License-Identifier: LGPL-3.0-or-later

#include "interference.h"
#include "recordwidgettest.h"

#include <tellarix/qt/application.h>
#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/timescale.h>

using namespace Tellarix;
using Gui::RecordMarker;
using Gui::TimeScale;

namespace {

const char *const Updated = SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *));
const char *const Current =
    SIGNAL(currentMarkerChanged(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *));
const char *const Ticks = SIGNAL(changedInterval(double, double, double));

void dragOverMarker(TestWidget &widget)
{
    dragMouse(&widget, {40, 50}, {80, 50});
}

const std::vector<Case<TestWidget>> widgetCases{
    {"hover", SIGNAL(cursorMoved(Tellarix::Gui::RecordWidget *, const Tellarix::Core::Time &)),
     [](TestWidget &widget) {
         sendMouse(&widget, QEvent::MouseMove, {60, 50}, Qt::NoButton);
     }},
    {"click", SIGNAL(timeClicked(const Tellarix::Core::Time &)),
     [](TestWidget &widget) {
         dragMouse(&widget, {90, 50}, {90, 50});
     }},
    {"press on marker", Current, dragOverMarker},
    {"press on marker, which goes", Current, dragOverMarker,
     [](TestWidget &widget) { widget.removeMarker(0); }},
    {"drag of marker",
     SIGNAL(markerMoving(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *)),
     dragOverMarker},
    {"drop of marker",
     SIGNAL(markerMoved(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *)),
     dragOverMarker},
    {"removal of current marker", Current,
     [](TestWidget &widget) {
         QSignalBlocker blocker(widget);
         widget.setCurrentMarker(widget.marker(0));
         blocker.unblock();
         widget.clearMarkers();
     }},
    {"new slot", Updated, [](TestWidget &widget) { widget.setRecordScale(2, 5); }},
    {"new records", Updated,
     [](TestWidget &widget) {
         widget.install({record(0, {1, 2})});
     }},
    {"no records", Updated, [](TestWidget &widget) { widget.clearRecords(); }},
    {"fewer slots", Updated, [](TestWidget &widget) { widget.setSlotCount(0); }},
    {"fewer slots, and none", Updated, [](TestWidget &widget) { widget.setSlotCount(1); },
     [](TestWidget &widget) { widget.setSlotCount(0); }},
    {"filter", Updated,
     [](TestWidget &widget) {
         const Integrator filter;
         widget.setFilter(&filter);
     }},
    {"fed record to filter", SIGNAL(filteringStarted(Tellarix::Gui::RecordWidget *)),
     [](TestWidget &widget) {
         const Integrator filter;
         widget.setFilter(&filter);
         widget.install({}, 0);
         widget.setBackgroundFiltering(true);
         widget.feed(record(0, Samples(600000, 1.0), 1000));
     }},
    {"end of filtering", SIGNAL(filteringProgress(Tellarix::Gui::RecordWidget *, int, int)),
     [](TestWidget &widget) {
         const QPointer<TestWidget> alive(&widget);
         const Integrator filter;
         widget.setBackgroundFiltering(true);
         widget.install({record(0, Samples(600000, 1.0), 1000)});
         widget.setFilter(&filter);
         QTRY_VERIFY(!alive || !alive->isFilteringInProgress());
     }},
};

const std::vector<Case<TimeScale>> rulerCases{
    {"scale", SIGNAL(scaleChanged(double)), [](TimeScale &ruler) { ruler.setScale(7); }},
    {"range", SIGNAL(rangeChanged(double, double)),
     [](TimeScale &ruler) { ruler.setRange(100, 900); }},
    {"ticks", Ticks, [](TimeScale &ruler) { ruler.setScale(0.01); }},
    {"ticks of other times", Ticks, [](TimeScale &ruler) { ruler.setAbsoluteTimeEnabled(true); }},
    {"ticks of another alignment", Ticks,
     [](TimeScale &ruler) {
         QSignalBlocker blocker(ruler);
         ruler.setAbsoluteTimeEnabled(true);
         blocker.unblock();
         ruler.setAlignment(at(0));
     }},
    {"position", Ticks, [](TimeScale &ruler) { ruler.setPosition(TimeScale::Left); }},
    {"end of selection", SIGNAL(selectionChanged(double, double)),
     [](TimeScale &ruler) {
         dragMouse(&ruler, {100, 5}, {200, 5}, Qt::MiddleButton);
     }},
};

} // namespace

/** Receivers of a signal may delete or change its sender. */
class TestReentrancy : public QObject
{
    Q_OBJECT

private slots:
    void recordWidget_data() { addRows(widgetCases); }

    void recordWidget()
    {
        auto *widget = new TestWidget;
        for (int slot = 0; slot < 3; ++slot)
            widget->install({record(0, {1, 2, 3})}, slot);
        if (qstrcmp(QTest::currentDataTag(), "new slot") == 0)
            widget->setSlotCount(0);
        widget->enableFiltering(true);
        widget->setCursorShown(true);
        auto *marker = new RecordMarker(at(20));
        marker->setMovable(true);
        widget->addMarker(marker);
        run(widgetCases, widget);
    }

    void timeScale_data() { addRows(rulerCases); }

    void timeScale()
    {
        auto *ruler = new TimeScale;
        ruler->resize(400, 40);
        ruler->showRange(0, 600);
        ruler->setAlignment(at(1234));
        ruler->setRangeSelectionEnabled(true);
        run(rulerCases, ruler);
    }

    void mainWidgetMayGoUnderAWarning()
    {
        int argc = 1;
        char name[] = "test";
        char *argv[] = {name, nullptr};
        Gui::Application application(argc, argv, 0);
        const QPointer<QWidget> widget(new QWidget);
        application.setMainWidget(widget);
        QTimer::singleShot(0, widget, [&] { delete widget; });
        application.showWarning("The archive is gone");
        QVERIFY(!widget);
    }
};

QTEST_MAIN(TestReentrancy)
#include "tst_reentrancy.moc"
