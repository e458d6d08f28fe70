// SPDX-License-Identifier: LGPL-3.0-or-later

#include "roworder.h"

#include "bench/tracerows.h"
#include "rowdatakeys.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QAction>
#include <QActionGroup>
#include <QHash>
#include <QMenu>

#include <algorithm>
#include <tuple>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

bool isNearer(const Trace *a, const Trace *b)
{
    const auto key = [](const Trace *row) {
        return std::make_tuple(row->data(Norvu::Gui::TraceDistance).toDouble(), row->label());
    };
    return key(a) < key(b);
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
    return std::make_tuple(componentOf(*a), a->label()) <
           std::make_tuple(componentOf(*b), b->label());
}

bool isOpenedBefore(const Trace *a, const Trace *b)
{
    return a->data(OpenedKey).toInt() < b->data(OpenedKey).toInt();
}

bool isPlacedBefore(const Trace *a, const Trace *b)
{
    return a->data(PlaceKey).toInt() < b->data(PlaceKey).toInt();
}

struct Order
{
    const char *name; /**< in settings */
    QString text;
    bool (*lessThan)(const Trace *, const Trace *);
};

const QVector<Order> &orders()
{
    static const QVector<Order> all{
        {"distance", RowOrder::tr("By &distance, then name"), isNearer},
        {"name", RowOrder::tr("By &name"), isNamedBefore},
        {"station", RowOrder::tr("By &station"), isOfStationBefore},
        {"component", RowOrder::tr("By &component"), isOfComponentBefore},
        {"opened", RowOrder::tr("As &opened"), isOpenedBefore},
    };
    return all;
}

/** Brings rows of a station together behind the first of them. */
QList<Trace *> groupedByStation(const QList<Trace *> &rows)
{
    QHash<QString, int> groupOf;
    QVector<QList<Trace *>> groups;
    for (Trace *row : rows) {
        const QString station = stationOf(*row);
        if (!groupOf.contains(station)) {
            groupOf.insert(station, groups.size());
            groups.append(QList<Trace *>());
        }
        groups[groupOf.value(station)].append(row);
    }
    QList<Trace *> result;
    for (const QList<Trace *> &group : groups)
        result += group;
    return result;
}

} // namespace

RowOrder::RowOrder(TraceView *view)
    : QObject(view), _view(view), _menu(new QMenu(tr("S&ort rows"))),
      _orders(new QActionGroup(this)), _group(new QAction(tr("&Group by station"), this))
{
    for (int i = 0; i < orders().size(); ++i)
        addOrder(orders()[i].name, orders()[i].text, i + 1);
    _orders->actions().first()->setChecked(true);
    connect(_orders, SIGNAL(triggered(QAction *)), this, SLOT(sort()));
    _menu->addSeparator();
    _menu->addAction(_group);
    _group->setCheckable(true);
    _group->setShortcut(tr("G"));
    _group->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    view->addAction(_group);
    connect(_group, SIGNAL(toggled(bool)), this, SLOT(sort()));
}

RowOrder::~RowOrder()
{
    delete _menu;
}

void RowOrder::addOrder(const QString &name, const QString &text, int number)
{
    QAction *action = _orders->addAction(text);
    action->setCheckable(true);
    action->setData(name);
    action->setShortcut(QStringLiteral("Ctrl+%1").arg(number));
    _menu->addAction(action);
}

void RowOrder::adopt(Trace *row)
{
    if (!row->data(OpenedKey).isValid())
        row->setData(OpenedKey, _rowCount++);
}

QString RowOrder::name() const
{
    return _orders->checkedAction()->data().toString();
}

void RowOrder::setName(const QString &name)
{
    for (QAction *action : _orders->actions()) {
        if (action->data() == name)
            action->setChecked(true);
    }
}

void RowOrder::sort()
{
    QList<Trace *> rows = _view->items();
    for (const Order &order : orders()) {
        if (order.name == name())
            std::stable_sort(rows.begin(), rows.end(), order.lessThan);
    }
    if (_group->isChecked())
        rows = groupedByStation(rows);
    for (int i = 0; i < rows.size(); ++i)
        rows[i]->setData(PlaceKey, i);
    _view->sort(isPlacedBefore);
}

} // namespace Workbench
