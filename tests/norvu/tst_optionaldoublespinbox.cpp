#include <norvu/gui/optionaldoublespinbox.h>

#include <QLineEdit>
#include <QToolButton>
#include <QtTest>

using Norvu::Gui::OptionalDoubleSpinBox;

namespace {

QToolButton *resetButton(const OptionalDoubleSpinBox &box)
{
    return box.findChild<QToolButton *>(QStringLiteral("reset"));
}

} // namespace

class OptionalDoubleSpinBoxTest : public QObject
{
    Q_OBJECT

private slots:
    void startsUnset();
    void tellsValueFromUnset_data();
    void tellsValueFromUnset();
    void resetsWithButton();
    void keepsTextBesideButton_data();
    void keepsTextBesideButton();
};

void OptionalDoubleSpinBoxTest::startsUnset()
{
    OptionalDoubleSpinBox box;
    QCOMPARE(box.text(), QStringLiteral("Unset"));
    QVERIFY(!box.isValid());
    QVERIFY(!resetButton(box)->isEnabled());
    QCOMPARE(resetButton(box)->toolTip(), QStringLiteral("Value is unset"));
    QCOMPARE(resetButton(box)->cursor().shape(), Qt::ArrowCursor);
}

void OptionalDoubleSpinBoxTest::tellsValueFromUnset_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("isValid");

    QTest::newRow("inside") << 12.5 << true;
    QTest::newRow("minimum") << -90.0 << false;
    QTest::newRow("rounded to minimum") << -89.999 << false;
    QTest::newRow("just above minimum") << -89.99 << true;
}

void OptionalDoubleSpinBoxTest::tellsValueFromUnset()
{
    QFETCH(double, value);
    QFETCH(bool, isValid);

    OptionalDoubleSpinBox box;
    box.setRange(-90, 90);
    box.setValue(45);
    box.setValue(value);
    QCOMPARE(box.isValid(), isValid);
    QCOMPARE(resetButton(box)->isEnabled(), isValid);
    QCOMPARE(box.text() == QStringLiteral("Unset"), !isValid);
    QCOMPARE(resetButton(box)->toolTip(),
             isValid ? QStringLiteral("Unset value") : QStringLiteral("Value is unset"));
}

void OptionalDoubleSpinBoxTest::resetsWithButton()
{
    OptionalDoubleSpinBox box;
    box.setRange(-10, 10);
    box.setValue(5);
    box.resize(200, 30);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QSignalSpy changed(&box, SIGNAL(valueChanged(double)));

    // Through the window, so that the button has to lie above the box's edit.
    const QPoint center = resetButton(box)->mapTo(&box, resetButton(box)->rect().center());
    QTest::mouseClick(box.windowHandle(), Qt::LeftButton, Qt::NoModifier, center);
    QCOMPARE(box.value(), -10.0);
    QCOMPARE(changed.size(), 1);
    QVERIFY(!box.isValid() && !resetButton(box)->isEnabled());
}

void OptionalDoubleSpinBoxTest::keepsTextBesideButton_data()
{
    QTest::addColumn<int>("fontSize");
    QTest::newRow("small letters") << 9;
    QTest::newRow("large letters") << 36;
}

void OptionalDoubleSpinBoxTest::keepsTextBesideButton()
{
    QFETCH(int, fontSize);

    QWidget window;
    QFont font = window.font();
    font.setPixelSize(fontSize);
    window.setFont(font);
    OptionalDoubleSpinBox box(&window);
    box.resize(10 * fontSize, box.sizeHint().height());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    QCOMPARE(resetButton(box)->font().pixelSize(), fontSize + 2);
    const QRect button = resetButton(box)->geometry();
    QVERIFY(box.rect().contains(button));
    QVERIFY(qAbs(button.center().y() - box.rect().center().y()) <= 1);
    QVERIFY(box.findChild<QLineEdit *>()->geometry().left() > button.right());
}

QTEST_MAIN(OptionalDoubleSpinBoxTest)
#include "tst_optionaldoublespinbox.moc"
