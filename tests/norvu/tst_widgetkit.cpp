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
    void sizesBadgeByItsFont();
    void choosesReadableBadgeText_data();
    void choosesReadableBadgeText();
    void keepsBadgeTextColorUnlessAsked();
    void paintsBadgeWithRoundCorners();
    void sizesMenusByTheirLayout();
    void walksDropDownsWithTabKey();
    void followsMouseWithTextColor();
    void coversParent();
    void followsNewParentOnly();
    void endsDialogWithButtonsAndKeys_data();
    void endsDialogWithButtonsAndKeys();
};

void WidgetKitTest::sizesBadgeByItsFont()
{
    Badge plain(QStringLiteral("42"));
    QCOMPARE(plain.font().pointSizeF(), QApplication::font().pointSizeF() * 0.9);
    QCOMPARE(plain.sizePolicy(), QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed));

    Badge large(QStringLiteral("42"));
    large.setFont(fontOfSize(40));
    QLabel label(QStringLiteral("42"));
    label.setFont(large.font());
    const int height = large.fontMetrics().height();
    QCOMPARE(large.sizeHint() - label.sizeHint(), QSize(height * 80 / 100, height / 4));
}

void WidgetKitTest::choosesReadableBadgeText_data()
{
    QTest::addColumn<QColor>("background");
    QTest::addColumn<QColor>("text");

    QTest::newRow("white") << QColor(Qt::white) << QColor(Qt::black);
    QTest::newRow("pure red is dark") << QColor(255, 0, 0) << QColor(Qt::white);
    // 2126 * 255 + 7152 * 148 + 722 * 13 = 1,610,012 and one step of blue less is 1,609,290.
    QTest::newRow("orange just bright") << QColor(255, 148, 13) << QColor(Qt::black);
    QTest::newRow("orange just dark") << QColor(255, 148, 12) << QColor(Qt::white);
}

void WidgetKitTest::choosesReadableBadgeText()
{
    QFETCH(QColor, background);
    QFETCH(QColor, text);

    Badge badge(QStringLiteral("M"));
    badge.setColor(background, true);
    badge.setFont(fontOfSize(40));
    badge.resize(badge.sizeHint());
    const QImage image = Ink::picture(badge);
    QVERIFY(!Ink::rectOfColor(image, background).isEmpty());
    QVERIFY(Ink::rectOf(image, badge.rect().adjusted(8, 8, -8, -8), [&](QRgb pixel) {
                return pixel == text.rgb();
            }).isValid());
}

void WidgetKitTest::keepsBadgeTextColorUnlessAsked()
{
    Badge badge(QStringLiteral("M"));
    badge.setTextColor(Qt::blue);
    badge.setColor(Qt::yellow, false);
    QCOMPARE(badge.palette().color(QPalette::Text), QColor(Qt::blue));
    badge.setColor(Qt::yellow, true);
    QCOMPARE(badge.palette().color(QPalette::Text), QColor(Qt::black));
}

void WidgetKitTest::paintsBadgeWithRoundCorners()
{
    Badge badge;
    badge.setColor(Qt::red, false);
    badge.resize(60, 30);
    const QImage image = Ink::picture(badge);
    QCOMPARE(Ink::rectOfColor(image, Qt::red), badge.rect());
    for (const QPoint &corner : {badge.rect().topLeft(), badge.rect().topRight(),
                                 badge.rect().bottomLeft(), badge.rect().bottomRight()})
        QVERIFY(image.pixelColor(corner) != QColor(Qt::red));
}

void WidgetKitTest::sizesMenusByTheirLayout()
{
    Menu menu;
    CustomWidgetMenu customMenu;
    for (QMenu *drop : {static_cast<QMenu *>(&menu), static_cast<QMenu *>(&customMenu)}) {
        drop->addAction(QStringLiteral("An action whose text is a good deal wider than the box"));
        auto *box = new QWidget;
        box->setFixedSize(90, 40);
        auto *layout = new QVBoxLayout(drop);
        layout->setContentsMargins(2, 3, 4, 5);
        layout->addWidget(box);
        QCOMPARE(drop->sizeHint(), QSize(96, 48));
    }
}

void WidgetKitTest::walksDropDownsWithTabKey()
{
    Menu menu;
    CustomWidgetMenu customMenu;
    for (QMenu *drop : {static_cast<QMenu *>(&menu), static_cast<QMenu *>(&customMenu)}) {
        auto *layout = new QVBoxLayout(drop);
        auto *first = new QLineEdit;
        auto *second = new QLineEdit;
        layout->addWidget(first);
        layout->addWidget(second);
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

void WidgetKitTest::followsMouseWithTextColor()
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

void WidgetKitTest::coversParent()
{
    QWidget parent;
    parent.resize(200, 100);
    Overlay overlay(&parent);
    parent.show();
    QCOMPARE(overlay.geometry(), QRect(0, 0, 200, 100));

    parent.resize(320, 240);
    QCOMPARE(overlay.geometry(), QRect(0, 0, 320, 240));
}

void WidgetKitTest::followsNewParentOnly()
{
    QWidget first;
    QWidget second;
    first.resize(200, 100);
    second.resize(50, 60);
    first.show();
    second.show();
    auto *overlay = new Overlay(&first);

    overlay->setParent(&second);
    QCOMPARE(overlay->size(), second.size());
    first.resize(300, 300);
    QCOMPARE(overlay->size(), second.size());
    second.resize(70, 80);
    QCOMPARE(overlay->size(), second.size());

    overlay->setParent(nullptr);
    second.resize(90, 90);
    QCOMPARE(overlay->size(), QSize(70, 80));
    delete overlay;
}

void WidgetKitTest::endsDialogWithButtonsAndKeys_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("result");

    QTest::newRow("OK") << "OK" << 0 << int(QDialog::Accepted);
    QTest::newRow("Cancel") << "Cancel" << 0 << int(QDialog::Rejected);
    QTest::newRow("Return in the content") << "" << int(Qt::Key_Return) << int(QDialog::Accepted);
    QTest::newRow("Escape in the content") << "" << int(Qt::Key_Escape) << int(QDialog::Rejected);
}

void WidgetKitTest::endsDialogWithButtonsAndKeys()
{
    QFETCH(QString, button);
    QFETCH(int, key);
    QFETCH(int, result);

    auto *edit = new QLineEdit(QStringLiteral("*"));
    SimpleDialog dialog(edit);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), static_cast<QWidget *>(edit));
    QSignalSpy finished(&dialog, SIGNAL(finished(int)));
    if (key)
        QTest::keyClick(edit, static_cast<Qt::Key>(key));
    else
        QTest::mouseClick(buttonOf(dialog, button), Qt::LeftButton);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first().first().toInt(), result);
}

QTEST_MAIN(WidgetKitTest)
#include "tst_widgetkit.moc"
