// SPDX-License-Identifier: LGPL-3.0-or-later

#include "norvu/ink.h"
#include "rowname.h"

#include <norvu/gui/awesomecheckboxitemdelegate.h>
#include <norvu/gui/badge.h>
#include <norvu/gui/centericondelegate.h>
#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/menu.h>
#include <norvu/gui/overlay.h>

#include <QBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QStandardItemModel>
#include <QTreeView>
#include <QtTest>

#include <functional>

using namespace Norvu::Gui;

namespace {

QFont fontOfSize(int pixels)
{
    QFont font = QApplication::font();
    font.setPixelSize(pixels);
    return font;
}

constexpr int ExclusiveRole = Qt::UserRole + 1;
const QRect Cell(10, 20, 60, 40);

QStandardItem *checkItem(Qt::CheckState state, const QString &text = QString())
{
    auto *item = new QStandardItem(text);
    item->setCheckable(true);
    item->setCheckState(state);
    return item;
}

/** A model with one group, exclusive or not, of three items in column 0 and texts in column 1. */
void fillGroup(QStandardItemModel *model, bool exclusive, int checkedRow)
{
    auto *group = new QStandardItem(QStringLiteral("group"));
    if (exclusive)
        group->setData(1, ExclusiveRole);
    for (int row = 0; row < 3; ++row)
        group->appendRow({checkItem(row == checkedRow ? Qt::Checked : Qt::Unchecked),
                          new QStandardItem(QStringLiteral("text"))});
    model->appendRow({group, new QStandardItem});
}

QVector<int> states(const QStandardItemModel &model)
{
    QVector<int> result;
    const QModelIndex group = model.index(0, 0);
    for (int row = 0; row < model.rowCount(group); ++row)
        result << model.index(row, 0, group).data(Qt::CheckStateRole).toInt();
    return result;
}

QStyleOptionViewItem cellOption()
{
    QStyleOptionViewItem option;
    option.rect = Cell;
    option.state = QStyle::State_Enabled;
    option.font.setPixelSize(24);
    option.fontMetrics = QFontMetrics(option.font);
    option.palette.setColor(QPalette::Text, Qt::black);
    option.palette.setColor(QPalette::HighlightedText, Qt::red);
    // So that selected cells can be compared with plain glyphs.
    option.palette.setColor(QPalette::Highlight, Qt::white);
    option.palette.setColor(QPalette::Disabled, QPalette::Text, Qt::green);
    option.decorationSize = QSize(16, 16);
    return option;
}

QImage painted(const std::function<void(QPainter *)> &paint)
{
    QImage image(100, 100, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::blue);
    paint(&painter);
    return image;
}

QImage painted(const QStyledItemDelegate &delegate, const QStyleOptionViewItem &option,
               const QModelIndex &index)
{
    return painted([&](QPainter *painter) { delegate.paint(painter, option, index); });
}

/** What a glyph of a check box must look like, drawn without the delegate. */
QImage glyphInCell(QChar ch, const QColor &color)
{
    return painted([&](QPainter *painter) {
        QFont font = Norvu::FontAwesome5::font();
        font.setPixelSize(cellOption().fontMetrics.height());
        painter->setFont(font);
        painter->setPen(color);
        const int advance = QFontMetrics(font).horizontalAdvance(Norvu::FontAwesome5::chSquare);
        const QRect box = Cell.adjusted((Cell.width() - advance) / 2, 1, 0, 0);
        painter->drawText(box, Qt::AlignLeft | Qt::AlignVCenter, QString(ch));
    });
}

/** A view of a model with the delegate of check boxes, in which the user clicks. */
struct CheckView : QTreeView
{
    explicit CheckView(QAbstractItemModel *model)
    {
        setModel(model);
        setItemDelegate(new AwesomeCheckBoxItemDelegate(this));
        setEditTriggers(QAbstractItemView::NoEditTriggers);
        expandAll();
        resize(400, 200);
        show();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("The window of the view does not come up");
    }

    void click(const QModelIndex &index, const QPoint &fromCenter = QPoint())
    {
        QTest::mouseClick(viewport(), Qt::LeftButton, Qt::NoModifier,
                          visualRect(index).center() + fromCenter);
    }
};

} // namespace

class WidgetKitTest : public QObject
{
    Q_OBJECT

private slots:
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

    void drawsGlyphOfState()
    {
        namespace Icons = Norvu::FontAwesome5;
        const QColor pen(Qt::blue);
        const QColor highlighted(Qt::red);
        const QColor disabled(Qt::green);
        const std::tuple<const char *, bool, int, bool, QChar, QColor> rows[] = {
            {"unchecked", false, 0, false, Icons::chSquare, pen},
            {"checked", false, 2, false, Icons::chCheckSquare, pen},
            {"radio on", true, 2, false, Icons::chDotCircle, pen},
            {"selected", false, 2, true, Icons::chCheckSquare, highlighted},
            {"partial, selected", false, 1, true, Icons::chCheckSquare, disabled}};
        for (const auto &[name, exclusive, state, selected, glyph, color] : rows) {
            const RowName shown(name);
            QStandardItemModel model;
            fillGroup(&model, exclusive, 0);
            const QModelIndex index = model.index(0, 0, model.index(0, 0));
            model.setData(index, state, Qt::CheckStateRole);
            QStyleOptionViewItem option = cellOption();
            option.state.setFlag(QStyle::State_Selected, selected);
            QCOMPARE(painted(AwesomeCheckBoxItemDelegate(), option, index),
                     glyphInCell(glyph, color));
        }
    }

    void togglesWithMouseAndKeys()
    {
        QStandardItemModel model;
        model.appendRow(checkItem(Qt::Unchecked));
        model.appendRow(checkItem(Qt::PartiallyChecked));
        CheckView view(&model);

        // Anywhere in the cell, not only on the glyph.
        view.click(model.index(0, 0), QPoint(100, 3));
        QCOMPARE(model.item(0)->checkState(), Qt::Checked);
        QTest::keyClick(&view, Qt::Key_Return);
        QCOMPARE(model.item(0)->checkState(), Qt::Checked);
        QTest::keyClick(&view, Qt::Key_Space);
        QCOMPARE(model.item(0)->checkState(), Qt::Unchecked);

        view.setCurrentIndex(model.index(1, 0));
        QTest::keyClick(&view, Qt::Key_Space);
        QCOMPARE(model.item(1)->checkState(), Qt::Unchecked);
        model.item(1)->setEnabled(false);
        view.click(model.index(1, 0));
        QCOMPARE(model.item(1)->checkState(), Qt::Unchecked);
    }

    void reachesOneCheckBoxOfRow()
    {
        const std::tuple<QVector<int>, int, int> rows[] = {
            {{0}, 2, 0}, {{0, 1}, 1, 1}, {{0, 1}, 2, -1}};
        for (const auto &[checkable, clicked, toggled] : rows) {
            QStandardItemModel model;
            QList<QStandardItem *> row;
            for (int column = 0; column < 3; ++column)
                row << (checkable.contains(column) ? checkItem(Qt::Unchecked)
                                                   : new QStandardItem("text"));
            model.appendRow(row);
            CheckView(&model).click(model.index(0, clicked));
            for (const int column : checkable)
                QCOMPARE(row[column]->checkState() == Qt::Checked, column == toggled);
        }
    }

    void keepsGroupExclusive()
    {
        const std::tuple<bool, int, int, QVector<int>> rows[] = {{true, 2, 0, {0, 0, 2}},
                                                                 {true, 2, 1, {0, 0, 2}},
                                                                 {true, 0, 0, {2, 0, 0}},
                                                                 {false, 0, 0, {0, 0, 0}}};
        for (const auto &[isExclusive, row, column, result] : rows) {
            QStandardItemModel model;
            fillGroup(&model, isExclusive, 0);
            CheckView(&model).click(model.index(row, column, model.index(0, 0)));
            QCOMPARE(states(model), result);
        }
    }

    void centersIconsOnly()
    {
        QPixmap pixmap(16, 16);
        pixmap.fill(Qt::magenta);
        QStandardItemModel model;
        model.appendRow(new QStandardItem(QIcon(pixmap), QString()));
        const QImage image = painted(CenterIconDelegate(), cellOption(), model.index(0, 0));
        QCOMPARE(Ink::rectOfColor(image, Qt::magenta), QRect(10 + 22, 20 + 12, 16, 16));

        // Items without a check box or an icon look as ever.
        model.appendRow(new QStandardItem(QStringLiteral("MMM")));
        const QModelIndex text = model.index(1, 0);
        const QImage plain = painted(QStyledItemDelegate(), cellOption(), text);
        QCOMPARE(painted(CenterIconDelegate(), cellOption(), text), plain);
        QCOMPARE(painted(AwesomeCheckBoxItemDelegate(), cellOption(), text), plain);
    }
};

QTEST_MAIN(WidgetKitTest)
#include "tst_widgetkit.moc"
