// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventfilterwidget.h>

#include <QtTest>

using namespace Norvu::Gui;

namespace {

QVector<std::optional<double>> bounds(const EventFilterWidget &form)
{
    const EventFilter f = form.filter();
    return {f.fromLatitude, f.toLatitude, f.fromLongitude, f.toLongitude,
            f.fromDepth,    f.toDepth,    f.fromMagnitude, f.toMagnitude};
}

} // namespace

class EventFilterTest : public QObject
{
    Q_OBJECT

private slots:
    void takesBoundsInTabOrder()
    {
        EventFilterWidget form;
        const QVector<std::optional<double>> unset(8);
        QCOMPARE(bounds(form), unset);

        form.show();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        form.findChild<OptionalDoubleSpinBox *>("fromLatitude")->setFocus();
        const char *const typed[] = {"-12.34567", "89.9999", "-179.5", "180",
                                     "-998.5",    "99.99",   "-9.9",   "20"};
        for (const char *text : typed) {
            auto *box = qobject_cast<OptionalDoubleSpinBox *>(form.focusWidget());
            QVERIFY(box);
            QCOMPARE(box->text(), QString("Unset"));
            box->selectAll();
            QTest::keyClicks(box, text);
            QTest::keyClick(box, Qt::Key_Tab);
        }
        // What has more digits than the box can't be typed.
        QCOMPARE(bounds(form), (QVector<std::optional<double>>{-12.3456, 89.9999, -179.5, 180.0,
                                                               -998.5, 99.99, -9.9, 20.0}));
    }

    void leavesMinimumUnset_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("minimum");
        QTest::addColumn<double>("next"); // one step up
        QTest::newRow("latitude") << "fromLatitude" << -90.0 << -89.0;
        QTest::newRow("longitude") << "toLongitude" << -180.0 << -179.0;
        QTest::newRow("depth") << "fromDepth" << -999.0 << -998.0;
        QTest::newRow("magnitude") << "toMagnitude" << -10.0 << -9.5;
    }

    void leavesMinimumUnset()
    {
        QFETCH(QString, name);
        QFETCH(double, minimum);
        EventFilterWidget form;
        auto *box = form.findChild<OptionalDoubleSpinBox *>(name);
        box->stepUp();
        QTEST(box->value(), "next");
        QCOMPARE(bounds(form).count(std::nullopt), 7);
        box->setValue(minimum);
        QCOMPARE(bounds(form).count(std::nullopt), 8);
    }
};

QTEST_MAIN(EventFilterTest)
#include "tst_eventfilter.moc"
