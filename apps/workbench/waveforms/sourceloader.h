// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/tracefileloader.h>
#include <tellarix/core/timewindow.h>

#include <QSet>
#include <QVector>

#include <string>

namespace Workbench {

class RowAddition;

/** Loads all streams of a file or record stream URL, with a row for each stream, in the background.
 */
class SourceLoader : public Norvu::Gui::TraceFileLoader
{
    Q_OBJECT

public:
    /**
     * @param source    URL, or name of a file
     * @param addition  makes the traces of rows; may be null
     */
    SourceLoader(const QString &source, const RowAddition *addition, QObject *parent);

    /** False, with the reason, if a source can't be opened. */
    static bool isUsable(const std::string &source, QString *error);

    /** Streams that get no rows. */
    void setSkipped(const QSet<QString> &streams) { _skipped = streams; }

    const QString &source() const { return _source; }
    /** Begins to load, and returns; the dialog of load() would take the keyboard along. */
    void start(Norvu::Gui::TraceView *view, const Tellarix::Core::TimeWindow &window);
    /** Ends the load at once, without ended(). */
    void stop();
    /** Share of the source that has been read, 0 to 1; negative if unknown. */
    double progress() const;
    /** Whom it waits for and why; empty if the server is there. */
    QString outage() const;

    /** Records with samples that arrived so far. */
    int waveformCount() const { return _waveformCount; }
    /** Where they lie, in about that order. */
    const QVector<Tellarix::Core::TimeWindow> &arrivals() const { return _arrivals; }
    /** Records of text, which no row can show. */
    int textCount() const { return _textCount; }

signals:
    /** All records are there. */
    void ended();

protected slots:
    void receivedRecords(const QVector<Tellarix::RecordPtr> &records) override;

protected:
    Norvu::Gui::Trace *makeRow(const QString &label) const override;
    /** Tells nothing: the bench lists what is wrong with its sources. */
    void tell(const QString &text) override;

private slots:
    void finish();

private:
    QVector<Tellarix::RecordPtr> withoutSkipped(const QVector<Tellarix::RecordPtr> &records) const;
    void noteArrival(const Tellarix::Core::TimeWindow &window);

    QString _source;
    QSet<QString> _skipped;
    const RowAddition *_addition;
    int _waveformCount{0};
    int _textCount{0};
    QVector<Tellarix::Core::TimeWindow> _arrivals;
};

} // namespace Workbench
