// SPDX-License-Identifier: LGPL-3.0-or-later

#include "norvu/ink.h"

#include <norvu/gui/badge.h>
#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/menu.h>
#include <norvu/gui/overlay.h>
#include <norvu/gui/simpledialog.h>
#include <norvu/gui/toolbutton.h>

#include <QBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

using namespace Norvu::Gui;

namespace {

QPushButton *buttonOf(const QWidget &dialog, const QString &text)
{
    for (auto *button : dialog.findChildren<QPushButton *>()) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

QFont fontOfSize(int pixels)
{
    QFont font = QApplication::font();
    font.setPixelSize(pixels);
    return font;
}

} // namespace

class WidgetKitTest : public QObject
{
    Q_OBJECT

private slots:
    void sizesBadgeByItsFont()
    {
        Badge badge(QStringLiteral("42"));
        QCOMPARE(badge.font().pointSizeF(), QApplication::font().pointSizeF() * 0.9);
        badge.setFont(fontOfSize(40));
        QLabel label(QStringLiteral("42"));
        label.setFont(badge.font());
        const int height = badge.fontMetrics().height();
        QCOMPARE(badge.sizeHint() - label.sizeHint(), QSize(height * 80 / 100, height / 4));
    }

    void choosesReadableBadgeText()
    {
        // 2126 * 255 + 7152 * 148 + 722 * 13 = 1,610,012 and one step of blue less is 1,609,290.
        const QVector<QPair<QColor, QColor>> colors{{QColor(255, 0, 0), Qt::white},
                                                    {QColor(255, 148, 13), Qt::black},
                                                    {QColor(255, 148, 12), Qt::white}};
        for (const auto &[background, text] : colors) {
            Badge badge(QStringLiteral("M"));
            badge.setTextColor(Qt::blue);
            badge.setColor(background, false);
            QCOMPARE(badge.palette().color(QPalette::Text), QColor(Qt::blue));
            badge.setColor(background, true);
            badge.setFont(fontOfSize(40));
            badge.resize(badge.sizeHint());
            const QImage image = Ink::picture(badge);
            QVERIFY(Ink::rectOfColor(image, background).isValid());
            QVERIFY(
                Ink::rectOfColor(image.copy(badge.rect().adjusted(8, 8, -8, -8)), text).isValid());
        }
    }

    void walksDropDownsWithTabKey()
    {
        Menu menu;
        CustomWidgetMenu customMenu;
        for (QMenu *drop : {static_cast<QMenu *>(&menu), static_cast<QMenu *>(&customMenu)}) {
            auto *layout = new QVBoxLayout(drop);
            auto *first = new QLineEdit;
            auto *second = new QLineEdit;
            layout->addWidget(first);
            layout->addWidget(second);
            drop->addAction(
                QStringLiteral("An action whose text is much wider than both the edits"));
            QCOMPARE(drop->sizeHint(), layout->sizeHint());
            drop->popup(QPoint(20, 20));
            QVERIFY(QTest::qWaitForWindowExposed(drop));
            first->setFocus();
            QTest::keyClick(drop->windowHandle(), Qt::Key_Tab);
            QTest::keyClick(drop->windowHandle(), Qt::Key_A);
            QCOMPARE(second->text().toLower(), QStringLiteral("a"));
            QTest::keyClick(drop->windowHandle(), Qt::Key_Escape);
            QVERIFY(!drop->isVisible());
        }
    }

    void followsMouseWithTextColor()
    {
        QWidget window;
        QPalette colors = window.palette();
        colors.setColor(QPalette::HighlightedText, Qt::red);
        colors.setColor(QPalette::ButtonText, Qt::blue);
        window.setPalette(colors);
        auto *button = new ToolButton(&window);
        button->setAutoRaise(true);
        button->setText(QStringLiteral("M"));
        button->setFont(fontOfSize(40));
        button->setGeometry(30, 30, 60, 60);
        const auto hasInk = [button](const QColor &color) {
            return !Ink::rectOfColor(Ink::picture(*button), color).isEmpty();
        };

        window.resize(120, 120);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTest::mouseMove(&window, QPoint(2, 2));
        QTRY_VERIFY(hasInk(Qt::red));
        QVERIFY(!hasInk(Qt::blue));

        QTest::mousePress(button, Qt::LeftButton);
        QTRY_VERIFY(hasInk(Qt::blue));
        QTest::mouseRelease(button, Qt::LeftButton);

        QTest::mouseMove(button, QPoint(30, 30));
        QTRY_VERIFY(hasInk(Qt::blue));
        QTest::mouseMove(&window, QPoint(2, 2));
        QTRY_VERIFY(hasInk(Qt::red));
    }

    void followsNewParentOnly()
    {
        QWidget first;
        QWidget second;
        first.resize(200, 100);
        second.resize(50, 60);
        first.show();
        second.show();
        auto *overlay = new Overlay(&first);
        QCOMPARE(overlay->geometry(), first.rect());
        overlay->setParent(&second);
        first.resize(300, 300);
        QCOMPARE(overlay->size(), QSize(50, 60));
        second.resize(70, 80);
        QCOMPARE(overlay->size(), QSize(70, 80));
        overlay->setParent(nullptr);
        second.resize(90, 90);
        QCOMPARE(overlay->size(), QSize(70, 80));
        delete overlay;
    }

    void endsDialogWithButtonsAndKeys()
    {
        auto *edit = new QLineEdit(QStringLiteral("*"));
        SimpleDialog dialog(edit);
        QSignalSpy finished(&dialog, SIGNAL(finished(int)));
        for (int i = 0; i < 4; ++i) {
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            if (i == 0)
                QCOMPARE(dialog.focusWidget(), static_cast<QWidget *>(edit));
            if (i < 2)
                QTest::keyClick(edit, i % 2 ? Qt::Key_Escape : Qt::Key_Return);
            else
                QTest::mouseClick(buttonOf(dialog, i % 2 ? "Cancel" : "OK"), Qt::LeftButton);
            QCOMPARE(finished.size(), i + 1);
            QCOMPARE(finished.last().first().toInt(),
                     i % 2 ? QDialog::Rejected : QDialog::Accepted);
        }
    }
};

QTEST_MAIN(WidgetKitTest)
#include "tst_widgetkit.moc"
