// SPDX-License-Identifier: LGPL-3.0-or-later

#include "widgetgallery.h"

#include <norvu/gui/awesomecheckboxitemdelegate.h>
#include <norvu/gui/badge.h>
#include <norvu/gui/calendarwidget.h>
#include <norvu/gui/centericondelegate.h>
#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/datetimeedit.h>
#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/menu.h>
#include <norvu/gui/optionaldoublespinbox.h>
#include <norvu/gui/simpledialog.h>
#include <norvu/gui/toolbutton.h>

#include <QApplication>
#include <QButtonGroup>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QToolButton>
#include <QTreeView>

#include <memory>

using namespace Norvu::Gui;
namespace Icons = Norvu::FontAwesome5;

namespace Workbench {

namespace {

constexpr int Margin = 4;
constexpr int ExclusiveRole = Qt::UserRole + 1;

enum class State
{
    Normal,
    Focused,
    Disabled
};

/** A widget to be shown, and which of its parts takes the focus. */
struct Sample
{
    QWidget *widget = nullptr;
    QWidget *focus = nullptr;
};

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::WidgetGallery", text);
}

/** Widgets side by side, at the left. */
QWidget *inLine(const QList<QWidget *> &widgets)
{
    auto *line = new QWidget;
    auto *layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget *widget : widgets)
        layout->addWidget(widget);
    layout->addStretch();
    return line;
}

Sample icons()
{
    QList<QWidget *> buttons;
    for (const QIcon &icon :
         {Icons::iconSolid(Icons::chSync), Icons::iconSolid(Icons::chCrosshairs),
          Icons::iconSolid(Icons::chFilter), Icons::icon(Icons::chTrashAlt),
          Icons::icon(Icons::chCalendarAlt), Icons::iconLight(Icons::chEye),
          Icons::iconBrand(Icons::chGithub), Icons::iconSolid(Icons::chCircle, QColor(0xc0392b))}) {
        auto *button = new QToolButton;
        button->setAutoRaise(true);
        button->setIconSize(QSize(20, 20));
        button->setIcon(icon);
        buttons << button;
    }
    return {inLine(buttons), buttons.first()};
}

Sample badges()
{
    auto *count = new Badge(QStringLiteral("42"));
    auto *magnitude = new Badge(QStringLiteral("M 5.2"));
    magnitude->setColor(QColor(0xf1c40f), true);
    auto *status = new Badge(QStringLiteral("reviewed"));
    status->setColor(QColor(0x1e7e5a), true);
    return {inLine({count, magnitude, status}), nullptr};
}

Sample toolButtons()
{
    QList<QWidget *> buttons;
    for (const QChar glyph : {Icons::chPlay, Icons::chPause, Icons::chClock, Icons::chCog}) {
        auto *button = new ToolButton;
        button->setAutoRaise(true);
        QFont font = Icons::fontSolid();
        font.setPixelSize(button->fontMetrics().height());
        button->setFont(font);
        button->setText(QString(glyph));
        buttons << button;
    }
    QWidget *line = inLine(buttons);
    line->setBackgroundRole(QPalette::Highlight);
    line->setAutoFillBackground(true);
    return {line, buttons.first()};
}

Sample optionalNumbers()
{
    auto *unset = new OptionalDoubleSpinBox;
    unset->setRange(-90, 90);
    unset->setValue(-90);
    auto *latitude = new OptionalDoubleSpinBox;
    latitude->setRange(-90, 90);
    latitude->setSuffix(QStringLiteral("°"));
    latitude->setValue(38.71);
    return {inLine({unset, latitude}), latitude};
}

DateTimeEdit *dateTimeEdit()
{
    auto *edit = new DateTimeEdit;
    edit->setDateTime(QDateTime(QDate(2021, 7, 14), QTime(7, 5, 9), Qt::UTC));
    return edit;
}

Sample dateTime()
{
    auto *edit = dateTimeEdit();
    return {inLine({edit}), edit};
}

/** Takes a drop-down out of its owner, to be shown like any other widget. */
QWidget *embedded(QMenu *menu)
{
    menu->setParent(nullptr, Qt::Widget);
    menu->setFixedSize(menu->sizeHint());
    return inLine({menu});
}

Sample calendar()
{
    const std::unique_ptr<DateTimeEdit> edit(dateTimeEdit());
    auto *menu = edit->findChild<CustomWidgetMenu *>();
    QWidget *days = menu->findChild<QWidget *>(QStringLiteral("qt_calendar_calendarview"));
    return {embedded(menu), days};
}

Sample hours()
{
    CalendarWidget calendar(QDateTime(QDate(2021, 7, 14), QTime(7, 5), Qt::UTC));
    auto *menu = calendar.findChild<Menu *>();
    QWidget *hour = menu->buttonGroup()->button(7);
    return {embedded(menu), hour};
}

QStandardItem *checkItem(Qt::CheckState state)
{
    auto *item = new QStandardItem;
    item->setCheckable(true);
    item->setCheckState(state);
    return item;
}

QStandardItem *group(const QString &title, const QStringList &names, Qt::CheckState first)
{
    auto *result = new QStandardItem(title);
    for (int row = 0; row < names.size(); ++row)
        result->appendRow(
            {new QStandardItem(names[row]), checkItem(row == 0   ? first
                                                      : row == 1 ? Qt::PartiallyChecked
                                                                 : Qt::Unchecked)});
    return result;
}

QTreeView *smallView(QStandardItemModel *model)
{
    auto *view = new QTreeView;
    model->setParent(view);
    view->setModel(model);
    view->expandAll();
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->header()->setStretchLastSection(false);
    view->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    view->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    return view;
}

void fitHeight(QTreeView *view, int rows)
{
    view->setFixedHeight(view->header()->sizeHint().height() + rows * view->sizeHintForRow(0) +
                         2 * view->frameWidth());
}

Sample checkBoxes()
{
    auto *model = new QStandardItemModel;
    model->setHorizontalHeaderLabels({tr("Data"), tr("Used")});
    auto *streams =
        group(tr("Streams"), {"GE.APE..BHZ", "GE.APE..BHN", "GE.APE..BHE"}, Qt::Checked);
    auto *order = group(tr("Sort by"), {tr("distance"), tr("azimuth")}, Qt::Unchecked);
    order->setData(1, ExclusiveRole);
    order->child(0, 1)->setCheckState(Qt::Checked);
    order->child(1, 1)->setCheckState(Qt::Unchecked);
    model->appendRow({streams, new QStandardItem});
    model->appendRow({order, new QStandardItem});

    auto *view = smallView(model);
    view->setItemDelegateForColumn(1, new AwesomeCheckBoxItemDelegate(view));
    fitHeight(view, 7);
    view->setCurrentIndex(model->index(0, 0, model->index(0, 0)));
    return {view, view};
}

Sample centeredIcons()
{
    auto *model = new QStandardItemModel;
    model->setHorizontalHeaderLabels({tr("Event"), tr("Status")});
    model->appendRow({new QStandardItem(tr("Aegean Sea")),
                      new QStandardItem(Icons::iconSolid(Icons::chCheckSquare), QString())});
    model->appendRow({new QStandardItem(tr("Crete")),
                      new QStandardItem(Icons::iconSolid(Icons::chEye), QString())});
    auto *view = smallView(model);
    view->setRootIsDecorated(false);
    view->setItemDelegateForColumn(1, new CenterIconDelegate(view));
    fitHeight(view, 2);
    view->setCurrentIndex(model->index(0, 0));
    return {view, view};
}

Sample dialog()
{
    auto *edit = new QLineEdit(QStringLiteral("GE.*"));
    auto *result = new SimpleDialog(edit);
    result->setWindowFlags(Qt::Widget);
    return {result, edit};
}

/** A sample as it looks in a state, in a window of its own that does not appear. */
QPixmap picture(const Sample &sample, State state, int width)
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    layout->setContentsMargins(Margin, Margin, Margin, Margin);
    layout->addWidget(sample.widget);
    sample.widget->show();
    sample.widget->setEnabled(state != State::Disabled);
    window.setFixedWidth(width);
    window.setAttribute(Qt::WA_DontShowOnScreen);
    window.show();
    QWidget *active = QApplication::activeWindow();
    if (state == State::Focused && sample.focus) {
        QApplication::setActiveWindow(&window);
        // Styles show the focus of buttons to those only who use the keyboard.
        window.setAttribute(Qt::WA_KeyboardFocusChange);
        sample.focus->setFocus(Qt::TabFocusReason);
    } else if (QWidget *focus = window.focusWidget()) {
        focus->clearFocus();
    }
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    const QPixmap result = window.grab();
    QApplication::setActiveWindow(active);
    return result;
}

QLabel *caption(const QString &text)
{
    auto *label = new QLabel(text);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    // Level with the samples, which have a margin of their own.
    label->setContentsMargins(Margin, 2 * Margin, Margin, Margin);
    return label;
}

} // namespace

QPixmap widgetGallery()
{
    struct Row
    {
        const char *caption;
        Sample (*make)();
    };
    static constexpr Row Rows[] = {
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Icons"), icons},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Badges"), badges},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Tool buttons"), toolButtons},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Optional numbers"), optionalNumbers},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Date and time"), dateTime},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Its calendar"), calendar},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Its hours"), hours},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Check boxes"), checkBoxes},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Centred icons"), centeredIcons},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Dialog"), dialog},
    };
    struct Column
    {
        const char *caption;
        State state;
    };
    static constexpr Column Columns[] = {
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Normal"), State::Normal},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Focused"), State::Focused},
        {QT_TRANSLATE_NOOP("Workbench::WidgetGallery", "Disabled"), State::Disabled},
    };

    QWidget sheet;
    auto *grid = new QGridLayout(&sheet);
    grid->setHorizontalSpacing(24);
    const int width = sheet.fontMetrics().averageCharWidth() * 46;
    int row = 0;
    for (const Row &entry : Rows) {
        grid->addWidget(caption(tr(entry.caption)), ++row, 0, Qt::AlignTop);
        int column = 0;
        for (const Column &look : Columns) {
            auto *label = new QLabel;
            label->setPixmap(picture(entry.make(), look.state, width));
            grid->addWidget(label, row, ++column, Qt::AlignTop);
            if (row == 1)
                grid->addWidget(caption(tr(look.caption)), 0, column);
        }
    }
    return sheet.grab();
}

} // namespace Workbench
