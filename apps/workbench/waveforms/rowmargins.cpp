// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowmargins.h"

#include "bench/rowaddition.h"
#include "bench/tracerows.h"
#include "rowmargin.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QEvent>

#include <algorithm>
#include <utility>

using Norvu::Gui::Trace;

namespace Workbench {

namespace {

/** In a narrow view scales give way to the traces. */
constexpr int LeastTraceWidth = 160;
/** A ruler with less has room for no number but 0. */
constexpr int RulerLines = 5;

} // namespace

RowMargins::RowMargins(Norvu::Gui::TraceView *view, TraceRows *rows)
    : QObject(view), _view(view), _rows(rows)
{
    connect(_view, SIGNAL(layoutOrContentChanged()), this, SLOT(updateRest()));
    connect(_rows, SIGNAL(additionChanged()), this, SLOT(followAddition()));
    _timer.setSingleShot(true);
    connect(&_timer, SIGNAL(timeout()), this, SLOT(updateWidths()));
    connect(view, SIGNAL(rulerSpacingChanged(int)), &_timer, SLOT(start()));
    view->installEventFilter(this);
    followAddition();
}

bool RowMargins::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && _hasAdditions)
        _timer.start();
    return QObject::eventFilter(watched, event);
}

void RowMargins::followAddition()
{
    if (_rows->addition())
        connect(_rows->addition(), SIGNAL(changed()), this, SLOT(update()), Qt::UniqueConnection);
    update();
}

bool RowMargins::isAnyAdditionShown() const
{
    return _rows->addition() && _rows->addition()->isAnyShown();
}

void RowMargins::setRulersShown(bool show)
{
    if (show == _rulersShown)
        return;

    _rulersShown = show;
    update();
}

void RowMargins::setRowHeight(int height)
{
    _rowHeight = height;
    applyRowHeight();
}

/** What has to be told beside the rows needs some height, 0 if there is nothing. */
int RowMargins::neededHeight() const
{
    const int additions = isAnyAdditionShown() ? _rows->addition()->rowHeight() : 0;
    return _rulersShown ? std::max(additions, RulerLines * _view->fontMetrics().height())
                        : additions;
}

void RowMargins::applyRowHeight()
{
    _view->setMinimumRowHeight(std::max(_rowHeight, neededHeight()));
}

void RowMargins::update()
{
    // It takes a look at all rows.
    RowAddition *addition = isAnyAdditionShown() ? _rows->addition() : nullptr;
    _view->changeItems([&] {
        for (Trace *row : _view->items())
            update(row, addition);
    });
    const bool isRaised = neededHeight() > 0;
    if (isRaised && !_isRaised)
        _rowHeight = _view->minimumRowHeight(); // as the user has made it
    const bool wasRaised = std::exchange(_isRaised, isRaised);
    _hasAdditions = addition != nullptr;
    if (isRaised || wasRaised)
        applyRowHeight();
    updateWidths();
}

void RowMargins::update(Trace *row, RowAddition *addition)
{
    if (!_rulersShown && !addition) {
        row->setExtraWidget(nullptr);
        return;
    }
    if (!row->extraWidget())
        row->setExtraWidget(new RowMargin(row));
    auto *margin = static_cast<RowMargin *>(row->extraWidget());
    margin->setRulerShown(_rulersShown);
    margin->setScaleOf(addition);
    margin->setRulerUsed(!addition || addition->areAmplitudesShown(row->recordWidget()));
}

/** The last row with an addition may have been taken away. */
void RowMargins::updateRest()
{
    if (_hasAdditions && !isAnyAdditionShown())
        update();
}

/** Traces, and the time scale below them, end at the same pixel. */
void RowMargins::updateWidths()
{
    int scaleWidth = 0;
    for (const Trace *row : _view->items()) {
        if (const auto *margin = static_cast<RowMargin *>(row->extraWidget()))
            scaleWidth = std::max(scaleWidth, margin->scaleWidth());
    }
    if (_view->width() - _view->rulerSpacing() - scaleWidth < LeastTraceWidth)
        scaleWidth = 0;
    int width = 0;
    for (Trace *row : _view->items()) {
        if (auto *margin = static_cast<RowMargin *>(row->extraWidget())) {
            margin->setScaleWidth(scaleWidth);
            width = margin->sizeHint().width() + Trace::Spacing();
        }
    }
    if (width == _view->extraSpacing())
        return;
    _view->setExtraSpacing(width);
    _view->setTimeRange(_view->tmin(), _view->tmax());
}

} // namespace Workbench
