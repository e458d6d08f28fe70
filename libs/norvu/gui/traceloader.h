// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/abstracttraceloader.h>

#include <tellarix/core/timewindow.h>

#include <QList>
#include <QPair>
#include <QPointer>

#include <string>

namespace Norvu {
namespace Gui {

/** Loads the streams that are bound to the rows of a view from a record stream. */
class NORVU_GUI_API TraceLoader : public AbstractTraceLoader
{
    Q_OBJECT

public:
    /** @param url  URL of a record stream, such as "archive:///data/waveforms" */
    explicit TraceLoader(const std::string &url, QObject *parent = nullptr);

    /**
     * Loads a time window for all rows that are not marked as requested; without any stream to ask
     * for nothing is read. Slots with a bound stream
     * get an empty sequence first. Rows that wait are yellow; at the end rows with data are green,
     * the others red. Marking rows as requested is left to the host.
     * @return false if the stream can't be connected, which the user is told
     */
    bool load(TraceView *view, const Tellarix::Core::TimeWindow &window);

protected:
    void receivedRecord(Tellarix::Record *record) override;

private:
    bool requestRow(const QPointer<Trace> &row, const QList<QPair<std::string, int>> &bindings,
                    const Tellarix::Core::TimeWindow &window);
    bool requestStream(Trace *row, const std::string &id, int slot,
                       const Tellarix::Core::TimeWindow &window);

    bool _isAnythingAsked{false}; /**< of the stream, for this load */
};

} // namespace Gui
} // namespace Norvu
