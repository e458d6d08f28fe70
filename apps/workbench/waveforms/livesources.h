// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "livesource.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

namespace Workbench {

/** The sources that come in live, beside each other and beside whatever is being loaded. */
class LiveSources : public QObject
{
    Q_OBJECT

public:
    LiveSources(Bench *bench, Norvu::Gui::TraceView *view, QObject *parent);
    ~LiveSources() override;

    /** Begins with a source, unless it is being read already. */
    void add(const QString &source);
    bool isEmpty() const { return _sources.isEmpty(); }
    QStringList names() const;
    /** Whom each source waits for and why, in the order of the names; empty texts for those whose
     *  server is there. */
    const QStringList &outages() const { return _outages; }
    /** All rows that are fed. */
    QSet<const Norvu::Gui::Trace *> rows() const;

    /** How long rows keep records; 1 h at the start. */
    Tellarix::Core::TimeSpan length() const { return _length; }
    void setLength(Tellarix::Core::TimeSpan length);
    /** Longest length of the sources that there are. */
    Tellarix::Core::TimeSpan longestLength() const;
    /** Of the past, that the newest source was asked for; 0 without one. */
    Tellarix::Core::TimeSpan askedLength() const;
    /** False for a row that no source feeds. */
    bool restoreRow(Norvu::Gui::Trace *row);

    /** What has come since the last call. */
    RowArrivals takeArrivals();
    QList<Norvu::Gui::Trace *> takeNewRows();

public slots:
    void end(const QString &source);
    void endAll();
    /** Ends sources whose rows were all taken away. */
    void endWithoutRows();

signals:
    /** There are other sources. */
    void changed();
    /** Records have come, perhaps in new rows; told a few times a second at most. */
    void arrived();
    void problems(const QStringList &messages);
    void outagesChanged();

private slots:
    void wait();
    void tell();
    void removeEnded();
    void lookForOutages();

private:
    void remove(const QList<LiveSource *> &sources);

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    Tellarix::Core::TimeSpan _length{3600.0};
    QList<LiveSource *> _sources;
    QTimer _arrivalTimer;
    QTimer _messageTimer;
    QTimer _outageTimer;
    QStringList _outages;
};

} // namespace Workbench
