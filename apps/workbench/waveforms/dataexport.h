// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/core/timewindow.h>

#include <QStringList>
#include <QVector>

#include <cstdint>
#include <functional>
#include <vector>

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** What came of writing data to files. */
struct ExportOutcome
{
    bool ok{false};
    int streams{0};
    int64_t samples{0};
    int64_t bytes{0};
    QStringList files;    /**< those that are complete */
    QStringList messages; /**< problems, and what a format could not hold */

    /** "Wrote 3 streams, 36,000 samples, 81.5 kB to FILE". */
    QString text() const;
};

/**
 * The samples of some streams in a time window, as they were recorded, on their way to files.
 *
 * Samples are taken when the object is made; what arrives later is not part of it.
 */
class DataExport
{
public:
    /** Called with the share that is done, 0 to 1; false cancels. */
    using Progress = std::function<bool(double)>;

    DataExport(const QVector<const Tellarix::RecordSequence *> &streams,
               const Tellarix::Core::TimeWindow &window);

    /**
     * Raw records of the selected rows of a view, of all rows if none is selected, in the window
     * of chosenWindow().
     */
    static DataExport FromView(const Norvu::Gui::TraceView &view);
    /** The range selected on the time scale, or else in a row, or else the visible time window. */
    static Tellarix::Core::TimeWindow ChosenWindow(const Norvu::Gui::TraceView &view);

    const Tellarix::Core::TimeWindow &window() const { return _window; }
    /** True if no stream has samples in the window. */
    bool isEmpty() const { return _streams.empty(); }

    /**
     * Writes all streams to one miniSEED file. What was there before is replaced when the new file
     * is complete and not before.
     */
    ExportOutcome writeMiniSeed(const QString &file, const Progress &progress = {}) const;

    /**
     * Writes a SAC file for each stretch of each stream that has no gap. Files are replaced one by
     * one, each when it is complete. The format holds single precision only: samples that had to be
     * rounded are counted in a message.
     */
    ExportOutcome writeSac(const QString &folder, const Progress &progress = {}) const;
    /** Names of the files that writeSac() writes, such as "GE.APE..BHZ.2024-01-05T101112.sac". */
    QStringList sacFileNames() const;

private:
    using Records = std::vector<Tellarix::RecordCPtr>;
    struct SacFile
    {
        QString name;
        Records stretch;
    };

    std::vector<SacFile> sacFiles(QStringList *leftOut) const;
    size_t recordCount() const;
    QString nothingText() const;

    Tellarix::Core::TimeWindow _window;
    std::vector<Records> _streams;
};

} // namespace Workbench
