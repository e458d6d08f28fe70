// SPDX-License-Identifier: LGPL-3.0-or-later

#include "dataexport.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/client/io/savefile.h>
#include <tellarix/core/records/cut.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/formats/sac.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QSaveFile>
#include <QSet>

#include <cmath>
#include <set>
#include <string>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::DataExport", text);
}

QString counted(int64_t count, const QString &one, const QString &several)
{
    return QLocale().toString(static_cast<qlonglong>(count)) + ' ' + (count == 1 ? one : several);
}

QString timeText(Core::Time time)
{
    return QString::fromStdString(time.toString("%Y-%m-%d %H:%M:%S"));
}

/** The rows that a view is asked about: those that are selected, or all. */
QList<Trace *> chosenRows(const TraceView &view)
{
    return view.emptySelection() ? view.items() : view.selectedItems();
}

bool isPlain(QChar character)
{
    return character.unicode() < 128 &&
           (character.isLetterOrNumber() || character == '-' || character == '_');
}

/** A stream code without what would mean something else in the name of a file. */
QString fileNamePart(const std::string &code)
{
    QString part = QString::fromStdString(code);
    for (QChar &character : part) {
        if (!isPlain(character))
            character = '_';
    }
    return part;
}

QString sacName(const Record &first, const char *timeFormat)
{
    QStringList parts;
    for (const std::string &code :
         {first.networkCode(), first.stationCode(), first.locationCode(), first.channelCode()})
        parts.append(fileNamePart(code));
    parts.append(QString::fromStdString(first.startTime().toString(timeFormat)));
    return parts.join('.');
}

/** A name that no other stretch has: two of them may begin within one second. */
QString uniqueSacName(const Record &first, QSet<QString> &taken)
{
    const QString suffix = QStringLiteral(".sac");
    QString name = sacName(first, "%Y-%m-%dT%H%M%S") + suffix;
    const QString exact = sacName(first, "%Y-%m-%dT%H%M%S.%f");
    if (taken.contains(name))
        name = exact + suffix;
    for (int number = 2; taken.contains(name); ++number)
        name = QStringLiteral("%1-%2%3").arg(exact).arg(number).arg(suffix);
    taken.insert(name);
    return name;
}

/** Number of samples that single precision can't hold. */
int64_t countRounded(const Record &record)
{
    if (record.dataType() == DataType::Float || record.dataType() == DataType::Char)
        return 0;
    int64_t count = 0;
    for (int i = 0; i < record.sampleCount(); ++i) {
        const double value = record.data()->value(i);
        count += !std::isnan(value) && static_cast<double>(static_cast<float>(value)) != value;
    }
    return count;
}

} // namespace

QString ExportOutcome::text() const
{
    const QString place =
        files.size() == 1 ? QDir::toNativeSeparators(files.first())
                          : tr("%1 in %2")
                                .arg(counted(files.size(), tr("file"), tr("files")),
                                     files.isEmpty() ? QString() : QFileInfo(files.first()).path());
    return tr("Wrote %1, %2, %3 to %4")
        .arg(counted(streams, tr("stream"), tr("streams")),
             counted(samples, tr("sample"), tr("samples")), QLocale().formattedDataSize(bytes),
             place);
}

DataExport::DataExport(const QVector<const RecordSequence *> &streams,
                       const Core::TimeWindow &window)
    : _window(window)
{
    for (const RecordSequence *records : streams) {
        std::vector<RecordCPtr> cut = cutRecords(*records, window);
        if (!cut.empty())
            _streams.push_back(std::move(cut));
    }
}

DataExport DataExport::FromView(const TraceView &view)
{
    QVector<const RecordSequence *> streams;
    for (const Trace *row : chosenRows(view)) {
        const Gui::RecordWidget *widget = row->recordWidget();
        for (int slot = 0; slot < widget->slotCount(); ++slot) {
            if (const RecordSequence *records = widget->records(slot))
                streams.append(records);
        }
    }
    return DataExport(streams, ChosenWindow(view));
}

Core::TimeWindow DataExport::ChosenWindow(const TraceView &view)
{
    const Gui::TimeScale *scale = view.timeScale();
    if (scale->hasSelection())
        return {scale->timeAt(scale->selectionLower()), scale->timeAt(scale->selectionUpper())};

    for (const Trace *row : chosenRows(view)) {
        const Core::TimeWindow &selected = row->recordWidget()->selectedTimeWindow();
        if (!selected.isEmpty())
            return selected;
    }
    return view.visibleTimeWindow();
}

size_t DataExport::recordCount() const
{
    size_t count = 0;
    for (const Records &records : _streams)
        count += records.size();
    return count;
}

QString DataExport::nothingText() const
{
    return tr("there are no samples from %1 to %2 UTC")
        .arg(timeText(_window.startTime()), timeText(_window.endTime()));
}

ExportOutcome DataExport::writeMiniSeed(const QString &path, const Progress &progress) const
{
    ExportOutcome outcome;
    const auto fail = [&](const QString &cause) {
        outcome.messages.append(QStringLiteral("%1: %2").arg(path, cause));
        return outcome;
    };
    if (isEmpty())
        return fail(nothingText());

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(file.errorString());

    Formats::MiniSeedWriter writer(&file);
    std::set<std::string> ids;
    int64_t samples = 0;
    const size_t total = recordCount();
    size_t done = 0;
    for (const Records &records : _streams) {
        for (const RecordCPtr &record : records) {
            if (!writer.write(*record))
                return fail(QString::fromStdString(writer.errorString()));
            if (progress && !progress(double(++done) / double(total)))
                return fail(tr("cancelled, nothing was written"));
            ids.insert(record->streamID());
            samples += record->sampleCount();
        }
    }
    const int64_t bytes = file.pos();
    if (!IO::commitWhole(file))
        return fail(file.errorString());

    outcome.ok = true;
    outcome.streams = static_cast<int>(ids.size());
    outcome.samples = samples;
    outcome.bytes = bytes;
    outcome.files.append(path);
    return outcome;
}

std::vector<DataExport::SacFile> DataExport::sacFiles(QStringList *leftOut) const
{
    std::vector<SacFile> files;
    QSet<QString> names;
    for (const Records &records : _streams) {
        for (RecordStretch &stretch : gaplessStretches(records)) {
            const Record &first = *stretch.front();
            if (first.hasEndTime())
                files.push_back({uniqueSacName(first, names), std::move(stretch)});
            else if (leftOut)
                leftOut->append(tr("%1: record at %2 has no sampling frequency, which SAC needs")
                                    .arg(first.streamID().c_str(), timeText(first.startTime())));
        }
    }
    return files;
}

QStringList DataExport::sacFileNames() const
{
    QStringList names;
    for (const SacFile &file : sacFiles(nullptr))
        names.append(file.name);
    return names;
}

ExportOutcome DataExport::writeSac(const QString &folder, const Progress &progress) const
{
    ExportOutcome outcome;
    const auto fail = [&](const QString &name, const QString &cause) {
        outcome.messages.append(QStringLiteral("%1: %2").arg(name, cause));
        return outcome;
    };
    const std::vector<SacFile> files = sacFiles(&outcome.messages);
    if (files.empty())
        return fail(folder, nothingText());

    std::set<std::string> ids;
    int64_t rounded = 0;
    for (const SacFile &sac : files) {
        const QString path = QDir(folder).filePath(sac.name);
        const RecordCPtr record = joinedRecord(sac.stretch);
        QSaveFile file(path);
        std::string error;
        if (!file.open(QIODevice::WriteOnly))
            return fail(path, file.errorString());
        if (!Formats::writeSac(file, *record, error))
            return fail(path, QString::fromStdString(error));
        const int64_t bytes = file.pos();
        if (!IO::commitWhole(file))
            return fail(path, file.errorString());

        ids.insert(record->streamID());
        rounded += countRounded(*record);
        outcome.streams = static_cast<int>(ids.size());
        outcome.samples += record->sampleCount();
        outcome.bytes += bytes;
        outcome.files.append(path);
        const size_t done = static_cast<size_t>(outcome.files.size());
        if (progress && !progress(double(done) / double(files.size())) && done < files.size())
            return fail(folder, tr("cancelled after %1 of %2 files").arg(done).arg(files.size()));
    }
    if (rounded > 0)
        outcome.messages.append(
            tr("%1: SAC holds single precision, to which %2 rounded")
                .arg(folder, counted(rounded, tr("sample was"), tr("samples were"))));
    outcome.ok = true;
    return outcome;
}

} // namespace Workbench
