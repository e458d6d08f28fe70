// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rownames.h"

#include "rowname.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QEvent>

#include <algorithm>

using Norvu::Gui::Trace;

namespace Workbench {

namespace {

RowName *nameOf(const Trace *row)
{
    return row->recordWidget()->findChild<RowName *>(QString(), Qt::FindDirectChildrenOnly);
}

/** Of the view's width, what names may take. */
constexpr int ViewShare = 4;

/** What the numbers at the axes of rows leave free. */
int unusedAxisWidth(const Norvu::Gui::TraceView &view)
{
    const int used = view.fontMetrics().horizontalAdvance("-8.88e+08") + 2 * Trace::Spacing();
    return std::max(0, Trace::FixedLabelWidth(0) - used);
}

} // namespace

RowNames::RowNames(Norvu::Gui::TraceView *view) : QObject(view), _view(view)
{
    _timer.setSingleShot(true);
    connect(&_timer, SIGNAL(timeout()), this, SLOT(updateWidth()));
    connect(view, SIGNAL(layoutOrContentChanged()), &_timer, SLOT(start()));
    view->installEventFilter(this);
}

void RowNames::setShown(bool show)
{
    if (show == _isShown)
        return;

    _isShown = show;
    updateWidth();
}

void RowNames::setForeignWidth(int pixels)
{
    if (pixels == _foreignWidth)
        return;

    _foreignWidth = pixels;
    updateWidth();
}

void RowNames::setName(Trace *row, const QString &name)
{
    RowName *widget = nameOf(row);
    if (!widget)
        widget = new RowName(row->recordWidget());
    widget->setVisible(_isShown);
    widget->setText(name);
    _timer.start();
}

void RowNames::setDelay(Trace *row, const QString &delay, bool isPale)
{
    RowName *widget = nameOf(row);
    if (!widget)
        return;
    const int width = widget->sizeHint().width();
    widget->setDelay(delay, isPale);
    if (widget->sizeHint().width() != width)
        _timer.start();
}

bool RowNames::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        _timer.start();
    return QObject::eventFilter(watched, event);
}

void RowNames::updateWidth()
{
    _timer.stop();
    int width = 0;
    for (const Trace *row : _view->items()) {
        const RowName *name = _isShown ? nameOf(row) : nullptr;
        width = std::max(width, name ? name->sizeHint().width() : 0);
    }
    width = std::min(width, _view->width() / ViewShare);
    const int added =
        _foreignWidth < 0 ? std::max(0, width - unusedAxisWidth(*_view)) : _foreignWidth;
    const bool isOther = added != _view->nameWidth();
    _view->setNameWidth(added);
    for (Trace *row : _view->items()) {
        RowName *name = nameOf(row);
        if (!name)
            continue;
        name->setVisible(_isShown);
        name->resize(width, row->recordWidget()->height());
    }
    // The time scale has another width now.
    if (isOther)
        _view->setTimeRange(_view->tmin(), _view->tmax());
}

} // namespace Workbench
