// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowcommands.h"

#include "rowvisibility.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <QAction>
#include <QActionGroup>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>

#include <algorithm>
#include <tuple>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** When a row came, of all rows. */
constexpr int OpenedKey = 5;

QString componentOf(const Trace *row)
{
    return row->data(Norvu::Gui::TraceChannelCode).toString().right(1);
}

bool isNamedBefore(const Trace *a, const Trace *b)
{
    return a->label() < b->label();
}

bool isOfStationBefore(const Trace *a, const Trace *b)
{
    const auto key = [](const Trace *row) {
        return std::make_tuple(row->data(Norvu::Gui::TraceStationCode).toString(), row->label());
    };
    return key(a) < key(b);
}

bool isOfComponentBefore(const Trace *a, const Trace *b)
{
    return std::make_tuple(componentOf(a), a->label()) <
           std::make_tuple(componentOf(b), b->label());
}

bool isOpenedBefore(const Trace *a, const Trace *b)
{
    return a->data(OpenedKey).toInt() < b->data(OpenedKey).toInt();
}

struct Order
{
    const char *name; /**< in settings */
    QString text;
    bool (*lessThan)(const Trace *, const Trace *); /**< null for what the view sorts by itself */
};

const QVector<Order> &orders()
{
    static const QVector<Order> all{
        {"distance", RowCommands::tr("By &distance, then name"), nullptr},
        {"name", RowCommands::tr("By &name"), isNamedBefore},
        {"station", RowCommands::tr("Grouped by &station"), isOfStationBefore},
        {"component", RowCommands::tr("By &component"), isOfComponentBefore},
        {"opened", RowCommands::tr("As &opened"), isOpenedBefore},
    };
    return all;
}

/** Colours that differ in hue and stand out from either background. */
QColor componentColor(const QString &component, bool isDark)
{
    constexpr int Hues[] = {215, 12, 130, 280, 40};
    const int place = QString("ZNE12").indexOf(component);
    if (component.isEmpty() || place < 0)
        return QColor();
    return QColor::fromHsl(Hues[place], 170, isDark ? 175 : 80);
}

} // namespace

RowCommands::RowCommands(TraceView *view, RowVisibility *visibility)
    : QObject(view), _view(view), _visibility(visibility), _orderMenu(new QMenu(tr("S&ort rows"))),
      _orders(new QActionGroup(this)),
      _copy(addAction(tr("Copy stream &id"), tr("Ctrl+C"), SLOT(copyIds()))),
      _hide(addAction(tr("&Hide selected rows"), tr("Ctrl+H"), SLOT(hideSelected()))),
      _close(addAction(tr("&Close selected rows"), tr("Shift+Del"), SLOT(closeSelected()))),
      _showAll(new QAction(tr("Show hidden &rows"), this)),
      _colors(new QAction(tr("A colour per &component"), this))
{
    view->addActions(rowActions());
    _showAll->setShortcut(tr("Ctrl+Shift+H"));
    connect(_showAll, SIGNAL(triggered()), visibility, SLOT(showHidden()));
    _colors->setCheckable(true);
    connect(_colors, SIGNAL(toggled(bool)), this, SLOT(colorRows()));
    for (const Order &order : orders()) {
        QAction *action = _orders->addAction(order.text);
        action->setCheckable(true);
        action->setData(order.name);
        _orderMenu->addAction(action);
    }
    _orders->actions().first()->setChecked(true);
    connect(_orders, SIGNAL(triggered(QAction *)), this, SLOT(sort()));
}

RowCommands::~RowCommands()
{
    delete _orderMenu;
}

QAction *RowCommands::addAction(const QString &text, const QString &key, const char *slot)
{
    auto *action = new QAction(text, this);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(action, SIGNAL(triggered()), this, slot);
    return action;
}

void RowCommands::adopt(Trace *row)
{
    if (row->data(OpenedKey).isValid())
        return;
    row->setData(OpenedKey, _rowCount++);
    if (_colors->isChecked())
        color(row);
}

QString RowCommands::order() const
{
    return _orders->checkedAction()->data().toString();
}

void RowCommands::setOrder(const QString &name)
{
    for (QAction *action : _orders->actions()) {
        if (action->data() == name)
            action->setChecked(true);
    }
}

void RowCommands::sort()
{
    for (const Order &item : orders()) {
        if (item.name != order())
            continue;
        item.lessThan ? _view->sort(item.lessThan) : _view->sortView();
    }
}

/** Rows that aren't in sight are left alone. */
QList<Trace *> RowCommands::shownSelection() const
{
    QList<Trace *> rows = _view->selectedItems();
    rows.erase(std::remove_if(rows.begin(), rows.end(),
                              [](const Trace *row) { return row->isTakenOut(); }),
               rows.end());
    return rows;
}

void RowCommands::copyIds()
{
    QStringList ids;
    for (const Trace *row : shownSelection())
        ids.append(row->label());
    if (!ids.isEmpty())
        QGuiApplication::clipboard()->setText(ids.join('\n'));
}

void RowCommands::hideSelected()
{
    const QList<Trace *> rows = shownSelection();
    _view->clearSelection();
    _visibility->hide(rows);
}

void RowCommands::closeSelected()
{
    const QList<Trace *> rows = shownSelection();
    for (Trace *row : rows)
        _view->removeItem(row);
    if (!rows.isEmpty())
        emit closed();
}

void RowCommands::colorRows()
{
    for (Trace *row : _view->items())
        color(row);
}

void RowCommands::color(Trace *row) const
{
    const bool isDark = _view->palette().color(QPalette::Base).lightness() < 128;
    const QColor color = _colors->isChecked() ? componentColor(componentOf(row), isDark) : QColor();
    if (!color.isValid()) {
        row->recordWidget()->removeRecordPen(0);
        return;
    }
    QPen pen(color, Tellarix::Gui::Scheme::Current().records.lineWidth);
    pen.setCosmetic(true);
    row->recordWidget()->setRecordPen(0, pen);
}

} // namespace Workbench
