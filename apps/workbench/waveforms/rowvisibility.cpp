// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowvisibility.h"

#include "coverage.h"
#include "rowgroups.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QAction>
#include <QEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QToolButton>

#include <algorithm>
#include <iterator>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** Longer menus are no help. */
constexpr int MostListedRows = 40;

} // namespace

RowVisibility::RowVisibility(TraceView *view, const Coverage *coverage, RowGroups *groups)
    : QObject(view), _view(view), _coverage(coverage), _groups(groups),
      _hideEmpty(new QAction(tr("Hide rows without &data"), this)),
      _showHidden(new QAction(tr("Show all hidden rows"), this)),
      _hiddenMenu(new QMenu(tr("Hidden ro&ws"))), _notice(new QToolButton)
{
    _showHidden->setShortcut(tr("Ctrl+Shift+H"));
    connect(_showHidden, SIGNAL(triggered()), this, SLOT(showHidden()));
    _hiddenMenu->addAction(_showHidden);
    connect(_hiddenMenu, SIGNAL(aboutToShow()), this, SLOT(fillHiddenMenu()));
    connect(_groups, SIGNAL(changed()), this, SLOT(update()));
    _hideEmpty->setCheckable(true);
    _hideEmpty->setChecked(true);
    _hideEmpty->setShortcut(tr("Ctrl+D"));
    _notice->setFocusPolicy(Qt::NoFocus);
    _notice->setAutoRaise(true);
    _notice->hide();
    _timer.setSingleShot(true);
    connect(&_timer, SIGNAL(timeout()), this, SLOT(update()));
    connect(_hideEmpty, SIGNAL(toggled(bool)), this, SLOT(update()));
    connect(_notice, SIGNAL(clicked()), this, SLOT(showAll()));
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateSoon()));
    connect(view, SIGNAL(layoutOrContentChanged()), this, SLOT(updateSoon()));
}

RowVisibility::~RowVisibility()
{
    delete _hiddenMenu;
    if (_notice && !_notice->parent())
        delete _notice;
}

void RowVisibility::watch(QWidget *widget)
{
    widget->installEventFilter(this);
}

bool RowVisibility::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress)
        _isDragged = true;
    const bool isReleased = event->type() == QEvent::MouseButtonRelease ||
                            (event->type() == QEvent::MouseMove &&
                             static_cast<QMouseEvent *>(event)->buttons() == Qt::NoButton);
    if (isReleased && _isDragged) {
        _isDragged = false;
        updateSoon();
    }
    return false;
}

QAbstractButton *RowVisibility::notice() const
{
    return _notice;
}

/** Lists the rows that the user has hidden, each of which can be shown again. */
void RowVisibility::fillHiddenMenu()
{
    _hiddenMenu->clear();
    _hiddenMenu->addAction(_showHidden);
    _hiddenMenu->addSeparator();
    int listed = 0;
    for (Trace *row : _view->items()) {
        if (!_hidden.contains(row) || listed++ >= MostListedRows)
            continue;
        QAction *action = _hiddenMenu->addAction(row->label(), this, SLOT(showOne()));
        action->setData(QVariant::fromValue<QObject *>(row));
    }
    if (listed > MostListedRows)
        _hiddenMenu->addAction(tr("and %1 more").arg(listed - MostListedRows))->setEnabled(false);
}

void RowVisibility::showOne()
{
    // It may be gone, and then the address belongs to nothing or to another row.
    auto *row = static_cast<Trace *>(static_cast<QAction *>(sender())->data().value<QObject *>());
    _hidden.remove(row);
    update();
}

/** Many steps at once are one. */
void RowVisibility::updateSoon()
{
    _timer.start();
}

void RowVisibility::hide(const QList<Trace *> &rows)
{
    _hidden += QSet<Trace *>(rows.begin(), rows.end());
    update();
}

void RowVisibility::keep(const QSet<const Trace *> &rows)
{
    if (rows == _kept)
        return;
    _kept = rows;
    updateSoon();
}

void RowVisibility::showAll()
{
    _hidden.clear();
    _hideEmpty->setChecked(false);
    update();
}

void RowVisibility::showHidden()
{
    _hidden.clear();
    update();
}

void RowVisibility::update()
{
    if (_isDragged)
        return;
    _timer.stop();
    const Tellarix::Core::TimeWindow visible = _view->visibleTimeWindow();
    const QList<Trace *> rows = _view->items();
    const QSet<Trace *> present(rows.begin(), rows.end());
    _hidden &= present;
    QSet<Trace *> hidden = _hidden;
    const bool hidesEmpty = _hideEmpty->isChecked() && _coverage->hasData(visible);
    for (Trace *row : rows) {
        if (_kept.contains(row))
            continue;
        if (hidesEmpty && _coverage->knows(row) && !_coverage->hasData(row, visible))
            hidden.insert(row);
        else if (_hideEmpty->isChecked() && !hidesEmpty && _empty.contains(row))
            hidden.insert(row);
    }
    _empty = hidden - _hidden;
    updateNotice(hidden.size() - _hidden.size(), _hidden.size());

    QList<Trace *> others;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(others),
                 [&](Trace *row) { return !hidden.contains(row); });
    _view->changeItems([&] {
        hidden += _groups->arrange(others);
        apply(hidden);
    });
}

void RowVisibility::apply(const QSet<Trace *> &hidden)
{
    bool hasChanged = false;
    for (Trace *row : _view->items()) {
        if (row->isTakenOut() == hidden.contains(row))
            continue;
        if (!hasChanged)
            _view->setUpdatesEnabled(false);
        hasChanged = true;
        row->setVisible(!hidden.contains(row));
    }
    if (!hasChanged)
        return;
    _view->setUpdatesEnabled(true);
    emit changed();
}

void RowVisibility::updateNotice(int emptyCount, int hiddenCount)
{
    QStringList texts;
    if (emptyCount > 0)
        texts.append(emptyCount == 1 ? tr("1 row without data here")
                                     : tr("%1 rows without data here").arg(emptyCount));
    if (hiddenCount > 0)
        texts.append(hiddenCount == 1 ? tr("1 row hidden") : tr("%1 rows hidden").arg(hiddenCount));
    _showHidden->setEnabled(hiddenCount > 0);
    _hiddenMenu->setEnabled(hiddenCount > 0);
    if (!_notice)
        return;
    _notice->setMenu(hiddenCount > 0 ? _hiddenMenu : nullptr);
    _notice->setPopupMode(hiddenCount > 0 ? QToolButton::MenuButtonPopup
                                          : QToolButton::DelayedPopup);
    _notice->setText(texts.join(", ") + tr(" – show"));
    _notice->setVisible(!texts.isEmpty());
}

} // namespace Workbench
