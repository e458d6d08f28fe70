// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowgroups.h"

#include "bench/tracerows.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QAction>
#include <QToolButton>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

QToolButton *makeTitle(const QString &station)
{
    auto *title = new QToolButton;
    title->setObjectName(station);
    title->setFocusPolicy(Qt::NoFocus);
    title->setAutoRaise(true);
    title->setAutoFillBackground(true);
    title->setBackgroundRole(QPalette::AlternateBase);
    title->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    title->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    title->setToolTip(RowGroups::tr("Fold or unfold the rows of this station"));
    return title;
}

/** Groups of rows of a station that follow one another. */
QVector<QList<Trace *>> stationGroups(const QList<Trace *> &rows)
{
    QVector<QList<Trace *>> groups;
    QString last;
    for (Trace *row : rows) {
        const QString station = stationOf(*row);
        if (groups.isEmpty() || station != last)
            groups.append(QList<Trace *>());
        groups.last().append(row);
        last = station;
    }
    return groups;
}

} // namespace

RowGroups::RowGroups(TraceView *view)
    : QObject(view), _view(view),
      _fold(addAction(tr("Fold or unfold statio&n"), tr("Shift+G"), SLOT(foldSelected()))),
      _foldAll(addAction(tr("Fold or &unfold all stations"), tr("Ctrl+Alt+G"), SLOT(foldAll())))
{
    setOn(false);
}

QAction *RowGroups::addAction(const QString &text, const QString &key, const char *slot)
{
    auto *action = new QAction(text, this);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(action, SIGNAL(triggered()), this, slot);
    _view->addAction(action);
    return action;
}

void RowGroups::setOn(bool on)
{
    _isOn = on;
    _fold->setEnabled(on);
    _foldAll->setEnabled(on);
    emit changed();
}

QSet<Trace *> RowGroups::arrange(const QList<Trace *> &rows)
{
    QSet<Trace *> begins;
    QSet<Trace *> hidden;
    const auto groups = _isOn ? stationGroups(rows) : QVector<QList<Trace *>>();
    for (const QList<Trace *> &group : groups) {
        begins.insert(group.first());
        putTitle(group);
        if (_folded.contains(stationOf(*group.first())))
            hidden += QSet<Trace *>(group.begin() + 1, group.end());
    }
    for (Trace *row : _view->items()) {
        if (!begins.contains(row))
            row->setHeading(nullptr);
    }
    return hidden;
}

void RowGroups::putTitle(const QList<Trace *> &group)
{
    Trace *row = group.first();
    const QString station = stationOf(*row);
    auto *title = static_cast<QToolButton *>(row->heading());
    if (!title) {
        title = makeTitle(station);
        connect(title, SIGNAL(clicked()), this, SLOT(foldOne()));
        row->setHeading(title);
    }
    title->setText(titleOf(group));
    title->setArrowType(_folded.contains(station) ? Qt::RightArrow : Qt::DownArrow);
}

QString RowGroups::titleOf(const QList<Trace *> &group) const
{
    const QString station = stationOf(*group.first());
    if (_folded.contains(station) && group.size() > 1)
        return tr("%1  ·  1 of %2 rows").arg(station).arg(group.size());
    return station;
}

void RowGroups::foldOne()
{
    toggle({sender()->objectName()});
}

void RowGroups::foldSelected()
{
    QSet<QString> stations;
    for (const Trace *row : _view->selectedItems())
        stations.insert(stationOf(*row));
    toggle(stations);
}

void RowGroups::foldAll()
{
    QSet<QString> stations;
    for (const Trace *row : _view->items())
        stations.insert(stationOf(*row));
    toggle(stations);
}

void RowGroups::toggle(const QSet<QString> &stations)
{
    if (_folded.contains(stations))
        _folded -= stations;
    else
        _folded += stations;
    emit changed();
}

} // namespace Workbench
