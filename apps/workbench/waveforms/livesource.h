// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/tracefileloader.h>
#include <tellarix/core/timewindow.h>

#include <QHash>
#include <QList>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <QVector>

#include <string>
#include <unordered_set>

namespace Workbench {

class Bench;

/** New records of each row; rows may be gone. */
using RowArrivals = QHash<const Norvu::Gui::Trace *, QVector<Tellarix::Core::TimeWindow>>;

/**
 * A record stream that goes on with the present, read in a thread of its own into the rows of a
 * view: those of its streams, and new ones for streams that have none.
 *
 * A server that can't be reached is waited for, also at the beginning.
 *
 * Rows keep what has come in the last while. One whose row was closed stays away.
 */
class LiveSource : public Norvu::Gui::TraceFileLoader
{
    Q_OBJECT

public:
    LiveSource(const QString &source, Bench *bench, Tellarix::Core::TimeSpan length,
               QObject *parent);
    /** Ends the stream and forgets the states of its streams. */
    ~LiveSource() override;

    /** Whether a source goes on with the present, if it is limited to @p window. */
    static bool isLive(const QString &source, const Tellarix::Core::TimeWindow &window);

    const QString &source() const { return _source; }
    void start(Norvu::Gui::TraceView *view, const Tellarix::Core::TimeWindow &window);
    /** Has the stream end soon, without waiting for it. */
    void close();

    /** Whom it waits for and why; empty if its server is there. */
    QString outage() const;

    /** Of the past, that the source was asked for. */
    Tellarix::Core::TimeSpan askedLength() const { return _askedLength; }
    /** How long rows keep records; at least what the source was asked for. */
    Tellarix::Core::TimeSpan length() const { return _length; }
    void setLength(Tellarix::Core::TimeSpan length);
    /** Gives a row, which was emptied, a sequence again if it is fed by this source. */
    bool restoreRow(Norvu::Gui::Trace *row);
    /** Whether it has had rows that were all taken away. */
    bool hasLostRows() const;

    /** What has come since the last call. */
    RowArrivals takeArrivals();
    QList<Norvu::Gui::Trace *> takeNewRows();
    QStringList takeMessages();
    QList<Norvu::Gui::Trace *> rows() const;

signals:
    /** Something can be taken. */
    void arrived();
    /** The stream has ended by itself. */
    void ended();

protected slots:
    void receivedRecord(Tellarix::Record *record) override;

protected:
    Norvu::Gui::Trace *makeRow(const QString &label) const override;
    std::unique_ptr<Tellarix::RecordSequence> makeRecords() const override;
    /** Tells nothing: the bench lists what is wrong with its sources. */
    void tell(const QString &text) override;

private slots:
    void noteMessage(const QString &text);

private:
    bool isWanted(const Tellarix::Record &record);
    Norvu::Gui::Trace *adoptRow(const std::string &id);
    void applyLength(Norvu::Gui::Trace *row, int slot);

    QString _source;
    Bench *_bench;
    Tellarix::Core::TimeSpan _askedLength;
    Tellarix::Core::TimeSpan _length;
    QHash<QString, QPointer<Norvu::Gui::Trace>> _rows; /**< by stream id */
    QList<QPointer<Norvu::Gui::Trace>> _newRows;
    RowArrivals _arrivals;
    QStringList _messages;
    int _messagesLeftOut{0};
    std::unordered_set<std::string> _ahead; /**< streams whose clock is wrong, once told */
};

} // namespace Workbench
