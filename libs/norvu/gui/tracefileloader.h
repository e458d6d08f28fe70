// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/abstracttraceloader.h>

#include <tellarix/core/timewindow.h>

#include <memory>
#include <string>

namespace Tellarix {
class RecordSequence;
} // namespace Tellarix

namespace Norvu {
namespace Gui {

/** Loads all streams of a file into a view, with a new row for each stream that has none. */
class NORVU_GUI_API TraceFileLoader : public AbstractTraceLoader
{
    Q_OBJECT

public:
    /** @param parent  not used: a file loader belongs to whoever made it */
    explicit TraceFileLoader(const std::string &file, QObject *parent = nullptr);

    /**
     * Loads the records that overlap @p window, all of them if it is invalid. Rows are made only
     * with a target slot that isn't negative; their sequences keep all records.
     * @return false if the file can't be opened or is in no known format, which the user is told
     */
    bool load(TraceView *view, const Tellarix::Core::TimeWindow &window);

protected:
    void receivedRecord(Tellarix::Record *record) override;
    /** Does the same as receivedRecord() with each, but feeds those of a stream together, which is
     *  much faster. A derived class that doesn't override that may do so with all that it receives.
     */
    void placeAll(const QVector<Tellarix::RecordPtr> &records);
    /** A row for a new stream, which the view takes over. */
    virtual Trace *makeRow(const QString &label) const;
    /** The sequence of a new row, which keeps all records unless it is overridden. */
    virtual std::unique_ptr<Tellarix::RecordSequence> makeRecords() const;

    /** A loader that makes rows for the streams of another source than a file; takes over
     *  @p stream. */
    explicit TraceFileLoader(Tellarix::Gui::RecordStreamThread *stream);

private:
    Trace *rowFor(const Tellarix::Record &record, int &slot);
    Trace *addRowFor(const Tellarix::Record &record);
};

} // namespace Gui
} // namespace Norvu
