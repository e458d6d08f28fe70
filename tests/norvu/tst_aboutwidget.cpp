// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/aboutwidget.h>

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QtTest>

using Norvu::Gui::AboutWidget;

class AboutWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void namesVersionInMailSubject_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("subject");

        QTest::newRow("one character") << "7"
                                       << "About%20norvu%20application";
        QTest::newRow("version") << "1.2"
                                 << "About%20norvu%20application%20%281.2%29";
        QTest::newRow("marks of a URL") << "1&2?"
                                        << "About%20norvu%20application%20%281%262%3F%29";
    }

    void namesVersionInMailSubject()
    {
        QFETCH(QString, version);
        QFETCH(QString, subject);

        AboutWidget dialog;
        dialog.setAttribute(Qt::WA_DeleteOnClose, false);
        dialog.setVersion(version);
        dialog.show();
        QCOMPARE(
            dialog.findChild<QLabel *>(QStringLiteral("labelMailTo"))->text(),
            QStringLiteral("<a href=\"mailto:norvu@example.org?subject=%1\">norvu@example.org</a>")
                .arg(subject));
    }

    void choosesTab()
    {
        AboutWidget dialog;
        dialog.setAttribute(Qt::WA_DeleteOnClose, false);
        auto *tabs = dialog.findChild<QTabWidget *>(QStringLiteral("tabWidget"));
        tabs->addTab(new QWidget, QStringLiteral("Licence"));
        tabs->addTab(new QWidget, QStringLiteral("Thanks"));
        tabs->setCurrentIndex(1);
        // The first one stands for the current one, as does what is out of range.
        const QVector<QPair<int, int>> asked{{0, 1}, {3, 1}, {2, 2}};
        for (const auto &[index, current] : asked) {
            dialog.show(index);
            QCOMPARE(tabs->currentIndex(), current);
        }
    }

    void closesWithButton()
    {
        QPointer<AboutWidget> dialog(new AboutWidget);
        dialog->show();
        QSignalSpy spy(dialog, SIGNAL(accepted()));
        QVERIFY(spy.isValid());
        QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("buttonOk")),
                          Qt::LeftButton);
        QCOMPARE(spy.count(), 1);
        QTRY_VERIFY(!dialog);
    }
};

QTEST_MAIN(AboutWidgetTest)
#include "tst_aboutwidget.moc"
