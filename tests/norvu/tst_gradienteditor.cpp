// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"
#include "gradienttesting.h"
#include "rowname.h"

#include <norvu/gui/gradienteditor.h>

#include <QColorDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QToolButton>
#include <QtTest>

#include <functional>

using namespace Norvu::Gui;
using namespace GradientTesting;

namespace {

constexpr double Third = 1.0 / 3;

Gradient stops()
{
    return gradientOf({{0, Qt::red, "low"}, {Third, Qt::green}, {1, Qt::blue, "high"}});
}

/** An editor, the number of its changes and short ways to its parts. */
struct Bench
{
    Bench() : changes(&editor, &GradientEditor::gradientChanged)
    {
        editor.setGradient(stops());
        editor.show();
        bar = editor.findChild<GradientWidget *>();
        key = child<QLineEdit>("editKey");
    }

    template <typename T>
    T *child(const char *name) const
    {
        return editor.findChild<T *>(QString::fromLatin1(name));
    }
    void click(double at, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        clickHandle(*bar, editor.gradient(), at, modifiers);
    }
    void enterKey(const QString &text) const
    {
        key->setText(text);
        QTest::keyClick(key, Qt::Key_Return);
    }
    QColor shownColor() const
    {
        return child<QToolButton>("btnColor")->palette().color(QPalette::Button);
    }

    GradientEditor editor;
    GradientWidget *bar{nullptr};
    QLineEdit *key{nullptr};
    QSignalSpy changes;
};

std::function<void(QDialog &)> editTable(std::function<void(QTableWidget &)> edit,
                                         bool accept = true)
{
    return [edit, accept](QDialog &dialog) {
        edit(*dialog.findChild<QTableWidget *>());
        for (auto *button : dialog.findChildren<QPushButton *>()) {
            if (button->text() == (accept ? QLatin1String("OK") : QLatin1String("Cancel"))) {
                button->click();
                return;
            }
        }
    };
}

/** Types into a cell as the user does. */
void typeInto(QTableWidget &table, int row, int column, const QString &text)
{
    table.setCurrentCell(row, column);
    table.editItem(table.item(row, column));
    const QPointer<QLineEdit> edit = table.viewport()->findChild<QLineEdit *>();
    QVERIFY(edit);
    edit->setText(text);
    QTest::keyClick(edit, Qt::Key_Return);
    // The text is taken over by the event loop; the editor must not be found again.
    QCoreApplication::processEvents();
    delete edit;
}

} // namespace

class TestGradientEditor : public QObject
{
    Q_OBJECT

private slots:
    void tableSelectsStopOfBefore()
    {
        Bench bench;
        bench.click(Third);
        bench.editor.pointsReleased();
        QVERIFY(!bench.key->isEnabled());
        Answer<QDialog> answer(editTable([](QTableWidget &) {}));
        bench.editor.openList();
        QVERIFY(bench.key->isEnabled());
        QCOMPARE(bench.shownColor(), QColor(Qt::green));
    }

    void keyFieldMovesStop()
    {
        const std::tuple<const char *, QString, QList<double>> rows[] = {
            {"unchanged", "0", QList<double>({0, Third, 1})},
            {"exponent", "-1e1", QList<double>({-10, Third, 1})},
            {"on another stop", "1", QList<double>({Third, 1})}};
        for (const auto &[name, text, keys] : rows) {
            const RowName shown(name);
            Bench bench;
            bench.click(0);
            bench.enterKey(text);
            QCOMPARE(bench.editor.gradient().keys(), keys);
            QCOMPARE(bench.changes.size(), 1);

            // The moved stop is still the selected one.
            bench.enterKey(QStringLiteral("7"));
            QCOMPARE(bench.editor.gradient().value(7),
                     qMakePair(QColor(Qt::red), QStringLiteral("low")));
            QCOMPARE(bench.editor.gradient().size(), keys.size());
        }
    }

    void refusesWhatIsNoNumber()
    {
        Bench bench;
        bench.click(Third);
        for (const char *text : {"high", "nan", "inf"}) {
            bench.key->setText(QString::fromLatin1(text));
            QString message;
            Answer<QMessageBox> answer([&](QMessageBox &box) {
                message = box.windowTitle() + ": " + box.text();
                box.accept();
            });
            // The field doesn't let such a text through; a style sheet or an input method might.
            bench.editor.valueUpdated();
            QCOMPARE(message, QStringLiteral("Error: Invalid number"));
            QCOMPARE(bench.key->text(), QStringLiteral("0.333333"));
        }
        QCOMPARE(bench.editor.gradient(), stops());
        QCOMPARE(bench.changes.size(), 0);
    }

    void doubleClickAsksForColor()
    {
        const std::tuple<const char *, double, bool, int> rows[] = {
            {"new stop", 2.0 / 3, true, 4},
            {"new stop, cancelled", 2.0 / 3, false, 3},
            {"stop", 1.0, true, 3}};
        for (const auto &[name, key, accepted, size] : rows) {
            const RowName shown(name);
            Bench bench;
            const QColor color(10, 20, 30, 40);
            const QPoint pos = handleOf(*bench.bar, bench.editor.gradient(), key);
            const double place = key < 1 ? bench.bar->mapPosToKey(pos.x()) : key;
            if (key == 1)
                bench.click(key);
            QColor offered;
            Answer<QColorDialog> answer([&](QColorDialog &dialog) {
                offered = dialog.currentColor();
                dialog.setCurrentColor(color);
                accepted ? dialog.accept() : dialog.reject();
            });
            QTest::mouseDClick(bench.bar, Qt::LeftButton, Qt::NoModifier, pos);
            QCOMPARE(offered, stops().colorAt(place));
            QCOMPARE(bench.editor.gradient().size(), size);
            QCOMPARE(bench.changes.size(), accepted ? 1 : 0);
            if (accepted) {
                QCOMPARE(bench.editor.gradient().value(place),
                         qMakePair(color, stops().value(place).second));
                QCOMPARE(bench.shownColor(), color);
            }
        }
    }

    void editsTag()
    {
        Bench bench;
        bench.click(1);
        Answer<QDialog> answer([](QDialog &dialog) {
            auto *edit = dialog.findChild<QLineEdit *>();
            QCOMPARE(edit->text(), QStringLiteral("high"));
            edit->setText(QStringLiteral("loud"));
            QTest::keyClick(edit, Qt::Key_Return);
        });
        QTest::mouseClick(bench.child<QToolButton>("btnTag"), Qt::LeftButton);
        QCOMPARE(bench.editor.gradient().value(1),
                 qMakePair(QColor(Qt::blue), QStringLiteral("loud")));
        QCOMPARE(bench.changes.size(), 1);
    }

    void tellsRemovalOfSelectedStopOnly()
    {
        Bench bench;
        bench.click(Third);
        bench.click(1, Qt::ControlModifier);
        QCOMPARE(bench.editor.gradient().keys(), QList<double>({0, Third}));
        QCOMPARE(bench.changes.size(), 0);
        QVERIFY(bench.key->isEnabled());

        bench.click(Third, Qt::ControlModifier);
        QCOMPARE(bench.editor.gradient().keys(), QList<double>({0}));
        QCOMPARE(bench.changes.size(), 1);
        QVERIFY(!bench.key->isEnabled());
        QCOMPARE(bench.key->text(), QString());
    }

    void newGradientIgnoresPendingInput()
    {
        Bench bench;
        QApplication::setActiveWindow(&bench.editor);
        bench.click(1);
        bench.key->setFocus();
        bench.key->setText(QStringLiteral("3"));
        bench.editor.setGradient(stops());
        QVERIFY(!bench.key->isEnabled() && bench.key->text().isEmpty());
        QCOMPARE(bench.editor.gradient(), stops());
        QCOMPARE(bench.changes.size(), 0);
    }

    void tableLeavesWhatWasNotEdited()
    {
        Bench bench;
        bench.click(Third);
        Answer<QDialog> answer(editTable(
            [](QTableWidget &table) { typeInto(table, 1, 0, QStringLiteral("0.333333")); }));
        QTest::mouseClick(bench.child<QToolButton>("btnList"), Qt::LeftButton);
        QVERIFY(answer.given);
        QCOMPARE(bench.editor.gradient(), stops());
        QCOMPARE(bench.changes.size(), 0);
    }

    void tableAppliesEdits()
    {
        const auto edit = [](QTableWidget &table) {
            typeInto(table, 0, 0, QStringLiteral("0.5"));
            table.editItem(table.item(0, 1));
            auto *dialog = table.viewport()->findChild<QColorDialog *>();
            QVERIFY(dialog);
            QCOMPARE(dialog->currentColor(), QColor(Qt::red));
            dialog->setCurrentColor(Qt::black);
            dialog->accept();
            typeInto(table, 1, 2, QStringLiteral("middle"));
        };
        Bench bench;
        {
            Answer<QDialog> cancel(editTable(edit, false));
            bench.editor.openList();
        }
        QCOMPARE(bench.editor.gradient(), stops());

        Answer<QDialog> answer(editTable(edit));
        bench.editor.openList();
        QCOMPARE(bench.editor.gradient(), gradientOf({{Third, Qt::green, "middle"},
                                                      {0.5, Qt::black, "low"},
                                                      {1, Qt::blue, "high"}}));
        QCOMPARE(bench.changes.size(), 1);
    }

    void selectionFollowsItsStop()
    {
        const std::tuple<const char *, QStringList, QString, QColor> rows[] = {
            {"moved", QStringList({"2", "", ""}), "2", QColor(Qt::red)},
            {"moved twice", QStringList({"1", "", "2"}), "2", QColor(Qt::red)},
            {"another one below", QStringList({"", "", "-1"}), "0", QColor(Qt::red)},
            {"replaced", QStringList({"", "", "0"}), "0", QColor(Qt::blue)}};
        for (const auto &[name, keys, key, color] : rows) {
            const RowName shown(name);
            Bench bench;
            bench.click(0);
            Answer<QDialog> answer(editTable([&](QTableWidget &table) {
                for (int row = 0; row < keys.size(); ++row) {
                    if (!keys[row].isEmpty())
                        typeInto(table, row, 0, keys[row]);
                }
            }));
            bench.editor.openList();
            QCOMPARE(bench.key->text(), key);
            QCOMPARE(bench.shownColor(), color);
            QCOMPARE(bench.editor.gradient().value(key.toDouble()).first, color);

            // The handle of the same stop is the selected one.
            bench.bar->deleteCurrent();
            QVERIFY(!bench.editor.gradient().contains(key.toDouble()));
        }
    }

    void tableWarnsOfLostStops()
    {
        Bench bench;
        Answer<QDialog> answer(editTable([](QTableWidget &table) {
            const auto *warning = table.window()->findChild<QLabel *>();
            typeInto(table, 0, 0, QStringLiteral("1"));
            QVERIFY(warning->isVisible());
            QCOMPARE(warning->text(),
                     QStringLiteral("The stop of 1 will be lost: the one of 0 takes its key."));
            typeInto(table, 0, 0, QStringLiteral("0"));
            QVERIFY(!warning->isVisible());
            typeInto(table, 0, 0, QStringLiteral("1"));
            typeInto(table, 2, 0, QStringLiteral("2"));
            QVERIFY(warning->isVisible());
        }));
        bench.editor.openList();
        QCOMPARE(bench.editor.gradient().keys(), QList<double>({Third, 2}));
        QCOMPARE(bench.editor.gradient().value(2).second, QStringLiteral("low"));
    }
};

QTEST_MAIN(TestGradientEditor)
#include "tst_gradienteditor.moc"
