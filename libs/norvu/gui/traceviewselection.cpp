// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include <norvu/gui/modaldialog_p.h>
#include <norvu/gui/simpledialog.h>
#include <norvu/gui/trace.h>

#include <QLineEdit>
#include <QPointer>
#include <QRegExp>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace Norvu {
namespace Gui {

void TraceView::setSelectionMode(QAbstractItemView::SelectionMode mode)
{
    _selectionMode = mode;
    clearSelection();
}

QList<Trace *> TraceView::selectedItems() const
{
    QList<Trace *> rows;
    std::copy_if(_items.begin(), _items.end(), std::back_inserter(rows),
                 [](const Trace *row) { return row->isSelected(); });
    return rows;
}

int TraceView::numberOfSelectedItems() const
{
    return static_cast<int>(std::count_if(_items.begin(), _items.end(),
                                          [](const Trace *row) { return row->isSelected(); }));
}

bool TraceView::emptySelection() const
{
    return std::none_of(_items.begin(), _items.end(),
                        [](const Trace *row) { return row->isSelected(); });
}

bool TraceView::setOnlySelected(const Trace *target, bool makeCurrent)
{
    bool hasChanged = false;
    const bool isAlive = visitRows([&](Trace *row) {
        // The rows above are deselected already when others hear of the current row.
        const QPointer<Trace> present(row);
        if (makeCurrent && row == target)
            updateCurrentTrace(row);
        if (present)
            hasChanged |= row->setSelected(row == target);
    });
    return isAlive && hasChanged;
}

void TraceView::updateCurrentTrace(Trace *row)
{
    if (row == _currentItem)
        return;

    Trace *old = std::exchange(_currentItem, row);
    emit currentItemChanged(old, row);
}

void TraceView::select(Trace *row)
{
    if (setOnlySelected(row, true))
        emit itemSelectionChanged();
}

void TraceView::selectAll()
{
    if (!allowsMultipleSelection())
        return;

    setSelected(_items, true);
}

/** Selects or deselects rows of the list, and tells so if it changes any. */
void TraceView::setSelected(const QList<Trace *> &rows, bool select)
{
    bool hasChanged = false;
    if (visitRows(rows, [&](Trace *row) { hasChanged |= row->setSelected(select); }) && hasChanged)
        emit itemSelectionChanged();
}

void TraceView::clearSelection()
{
    const QPointer<TraceView> alive(this);
    const bool hasChanged = setOnlySelected(nullptr);
    if (alive)
        updateCurrentTrace(nullptr);
    if (alive)
        emit itemSelectionCleared();
    if (alive && hasChanged)
        emit itemSelectionChanged();
}

void TraceView::selectMatching(const QString &pattern, bool select)
{
    const QRegExp expression(pattern, Qt::CaseSensitive, QRegExp::Wildcard);
    QList<Trace *> rows;
    std::copy_if(_items.begin(), _items.end(), std::back_inserter(rows),
                 [&](const Trace *row) { return expression.exactMatch(row->label()); });
    setSelected(rows, select);
}

void TraceView::selectPattern()
{
    selectByDialog(tr("Select pattern"), true);
}

void TraceView::deselectPattern()
{
    selectByDialog(tr("Deselect pattern"), false);
}

void TraceView::selectByDialog(const QString &title, bool select)
{
    if (!allowsMultipleSelection())
        return;

    auto *pattern = new QLineEdit(QStringLiteral("*"));
    pattern->selectAll();
    ModalDialog<SimpleDialog> dialog(pattern, this);
    dialog->setWindowTitle(title);
    if (dialog.isAccepted())
        selectMatching(pattern->text(), select);
}

void TraceView::setSelectedTrace(int index)
{
    const int rowCount = count();
    if (rowCount == 0) {
        updateCurrentTrace(nullptr);
        return;
    }

    const QPointer<TraceView> alive(this);
    Trace *row = _items[(index % rowCount + rowCount) % rowCount];
    Trace *old = std::exchange(_currentItem, row);
    const bool hasChanged = setOnlySelected(row);
    _scrollArea->ensureVisible(0, row->y(), 0, row->height());

    if (old != row)
        emit currentItemChanged(old, row);
    if (alive && hasChanged)
        emit itemSelectionChanged();
}

void TraceView::setCurrentItem(int index)
{
    if (index < 0 || index > count())
        return;

    setSelectedTrace(index);
}

void TraceView::setCurrentItem(Trace *row)
{
    setCurrentItem(indexOf(row));
}

void TraceView::selectPreviousRow()
{
    selectNeighbour(-1);
}

void TraceView::selectNextRow()
{
    selectNeighbour(1);
}

void TraceView::selectNeighbour(int step)
{
    if (_currentItem)
        selectNextShown(indexOf(_currentItem) + step, step);
    else if (!_items.isEmpty())
        scrollContents(step * _items.first()->height());
}

/** Selects the first row from @p index on, in steps, that the host hasn't hidden; rows wrap. */
void TraceView::selectNextShown(int index, int step)
{
    const int rowCount = count();
    for (int i = 0; i < rowCount; ++i, index += step) {
        if (_items[(index % rowCount + rowCount) % rowCount]->isTakenOut())
            continue;
        setSelectedTrace(index);
        return;
    }
}

void TraceView::scrollContents(int pixels)
{
    QScrollBar *bar = _scrollArea->verticalScrollBar();
    bar->setSliderPosition(bar->sliderPosition() + pixels);
}

} // namespace Gui
} // namespace Norvu
