// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceloader.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/timewindowbuffer.h>
#include <tellarix/core/strings.h>
#include <tellarix/qt/records/recordstreamthread.h>
#include <tellarix/qt/records/recordwidget.h>

#include <memory>

namespace Norvu {
namespace Gui {

TraceLoader::TraceLoader(const std::string &url, QObject *parent) : AbstractTraceLoader(parent)
{
    setStream(new Tellarix::Gui::RecordStreamThread(url));
}

bool TraceLoader::load(TraceView *view, const Tellarix::Core::TimeWindow &window)
{
    if (view->count() == 0)
        return true;
    const QString text = tr("Could not connect to %1");
    if (!connectStream(text))
        return false;

    _stream->setTimeWindow(window);
    _isAnythingAsked = false;
    // New sequences are told of, and whoever hears of them may remove rows.
    const QPointer<TraceView> present(view);
    for (int i = 0; present && i < view->count(); ++i) {
        const QPointer<Trace> row(view->itemAt(i));
        if (!row->isDataRequested() && requestRow(row, view->bindingsFor(row), window) && row)
            row->setColor(Qt::yellow);
    }
    if (!present)
        return true;
    if (_isAnythingAsked)
        return loadOrTell(view, text);

    // Asked for no stream at all, a source gives everything that it has.
    finish(view);
    return true;
}

bool TraceLoader::requestRow(const QPointer<Trace> &row,
                             const QList<QPair<std::string, int>> &bindings,
                             const Tellarix::Core::TimeWindow &window)
{
    bool isRequested = false;
    for (const auto &binding : bindings)
        isRequested |= row && requestStream(row, binding.first, binding.second, window);
    return isRequested;
}

bool TraceLoader::requestStream(Trace *row, const std::string &id, int slot,
                                const Tellarix::Core::TimeWindow &window)
{
    auto records = std::make_unique<Tellarix::TimeWindowBuffer>(window, 0.5);
    if (!row->recordWidget()->setRecords(slot, records.get(), true)) {
        qWarning("Failed to allocate trace");
        return false;
    }
    records.release();

    const std::vector<std::string> codes = Tellarix::Core::split(id, ".", false);
    if (codes.size() != 4) {
        qWarning("Invalid stream id: %s", id.c_str());
        return false;
    }
    _isAnythingAsked |= _stream->addStream(codes[0], codes[1], codes[2], codes[3]);
    return true;
}

void TraceLoader::receivedRecord(Tellarix::Record *record)
{
    const Tellarix::RecordPtr reference(record, false);
    if (!record || !_view || !hasEndTime(*record))
        return;

    int slot = 0;
    Trace *row = _view->itemBoundTo(record->streamID(), &slot);
    if (row)
        feed(row, _targetSlot >= 0 ? _targetSlot : slot, record);
}

} // namespace Gui
} // namespace Norvu
