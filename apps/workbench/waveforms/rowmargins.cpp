// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowmargins.h"

#include "bench/rowaddition.h"
#include "bench/tracerows.h"
#include "rowmargin.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <algorithm>

using Norvu::Gui::Trace;

namespace Workbench {

RowMargins::RowMargins(Norvu::Gui::TraceView *view, TraceRows *rows)
    : QObject(view), _view(view), _rows(rows)
{
    connect(_view, SIGNAL(layoutOrContentChanged()), this, SLOT(updateRest()));
    connect(_rows, SIGNAL(additionChanged()), this, SLOT(followAddition()));
    followAddition();
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

void RowMargins::applyRowHeight()
{
    _view->setMinimumRowHeight(_hasAdditions ? std::max(_rowHeight, _rows->addition()->rowHeight())
                                             : _rowHeight);
}

void RowMargins::update()
{
    // It takes a look at all rows.
    const bool isShown = isAnyAdditionShown();
    RowAddition *addition = isShown ? _rows->addition() : nullptr;
    _view->changeItems([&] {
        for (Trace *row : _view->items())
            update(row, addition);
    });
    if (isShown != _hasAdditions) {
        _hasAdditions = !_hasAdditions;
        if (_hasAdditions)
            _rowHeight = _view->minimumRowHeight(); // as the user has made it
        applyRowHeight();
    } else if (_hasAdditions) {
        applyRowHeight(); // what is added may be somewhere else
    }
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
