// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tracerows.h"

#include "rowaddition.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

namespace Workbench {

QString stationOf(const Norvu::Gui::Trace &row)
{
    return row.data(Norvu::Gui::TraceNetworkCode).toString() + '.' +
           row.data(Norvu::Gui::TraceStationCode).toString();
}

TraceRows::TraceRows(QObject *parent) : QObject(parent)
{}

TraceRows::~TraceRows() = default;

Norvu::Gui::TraceView *TraceRows::view() const
{
    return _view;
}

void TraceRows::setView(Norvu::Gui::TraceView *view)
{
    _view = view;
}

RowAddition *TraceRows::addition() const
{
    return _addition;
}

void TraceRows::setAddition(RowAddition *addition)
{
    if (addition == _addition)
        return;
    _addition = addition;
    emit additionChanged();
}

} // namespace Workbench
