// SPDX-License-Identifier: LGPL-3.0-or-later

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
    void tellsValueFromUnset()
    {
        OptionalDoubleSpinBox box;
        box.setRange(-90, 90);
        // The first one rounds to the minimum, which stands for no value.
        for (const double value : {-89.999, -89.99}) {
            box.setValue(45);
            box.setValue(value);
            const bool isValid = value > -89.995;
            QCOMPARE(box.isValid(), isValid);
            QCOMPARE(resetButton(box)->isEnabled(), isValid);
            QCOMPARE(box.text() == QStringLiteral("Unset"), !isValid);
        }
    }

    void resetsWithButton()
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

    void keepsTextBesideButton()
    {
        for (const int fontSize : {9, 36}) {
            QWidget window;
            QFont font = window.font();
            font.setPixelSize(fontSize);
            window.setFont(font);
            OptionalDoubleSpinBox box(&window);
            box.resize(10 * fontSize, box.sizeHint().height());
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            const QRect button = resetButton(box)->geometry();
            QVERIFY(box.rect().contains(button));
            QVERIFY(qAbs(button.center().y() - box.rect().center().y()) <= 1);
            QVERIFY(box.findChild<QLineEdit *>()->geometry().left() > button.right());
        }
    }
};

QTEST_MAIN(OptionalDoubleSpinBoxTest)
#include "tst_optionaldoublespinbox.moc"
