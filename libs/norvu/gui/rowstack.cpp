// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowstack_p.h"

#include <norvu/gui/trace.h>

#include <QChildEvent>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>

namespace Norvu {
namespace Gui {

namespace {

/** Shows a row that gets its size later: what is in it isn't laid out for the one it has now. */
void showUnarranged(Trace *row)
{
    const QPointer<QLayout> layout(row->layout());
    layout->setEnabled(false);
    row->resize(0, 0); // whatever it gets is another size
    row->show();
    if (layout)
        layout->setEnabled(true);
}

} // namespace

RowStack::RowStack(QWidget *parent) : QWidget(parent), _layout(new QVBoxLayout(this))
{
    _layout->setContentsMargins(0, 0, 0, 0);
    _layout->setSpacing(0);
}

void RowStack::append(Trace *row)
{
    insert(_layout->count(), row);
}

void RowStack::insert(int index, Trace *row)
{
    const bool isNew = row->parentWidget() != this;
    const bool isShown = isNew && isVisible() && !row->isTakenOut();
    _layout->insertWidget(std::min(index, _layout->count()), row);
    if (isShown)
        changeTogether([row] { showUnarranged(row); });
}

void RowStack::remove(Trace *row)
{
    _layout->removeWidget(row);
}

void RowStack::setOrder(const QList<Trace *> &rows)
{
    for (Trace *row : rows)
        _layout->removeWidget(row);
    for (Trace *row : rows)
        _layout->addWidget(row);
}

void RowStack::changeTogether(const std::function<void()> &change)
{
    const QPointer<RowStack> alive(this);
    const bool wasEnabled = _layout->isEnabled();
    _layout->setEnabled(false);
    change();
    if (alive)
        _layout->setEnabled(wasEnabled);
}

/** A layout that is disabled overlooks rows that go, and would still lay them out later. */
void RowStack::childEvent(QChildEvent *event)
{
    QWidget::childEvent(event);
    if (!event->removed() || _layout->isEnabled())
        return;
    for (int i = _layout->count() - 1; i >= 0; --i) {
        const QWidget *row = _layout->itemAt(i)->widget();
        if (!row || row == event->child())
            delete _layout->takeAt(i);
    }
}

int RowStack::indexOf(const Trace *row) const
{
    return _layout->indexOf(const_cast<Trace *>(row));
}

QList<Trace *> RowStack::rowsBetween(int first, int last) const
{
    QList<Trace *> rows;
    for (int i = std::max(first, 0); i <= std::min(last, _layout->count() - 1); ++i) {
        auto *row = qobject_cast<Trace *>(_layout->itemAt(i)->widget());
        if (row && !row->isHidden())
            rows.append(row);
    }
    return rows;
}

QList<Trace *> RowStack::allRows() const
{
    return rowsBetween(0, _layout->count() - 1);
}

Trace *RowStack::rowAt(const QPoint &position) const
{
    const QList<Trace *> rows = allRows();
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const Trace *candidate) {
        return candidate->geometry().contains(position);
    });
    return row == rows.end() ? nullptr : *row;
}

} // namespace Gui
} // namespace Norvu
