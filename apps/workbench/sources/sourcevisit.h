// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "datasource.h"
#include "stationlisting.h"

#include <tellarix/core/timewindow.h>

#include <QString>
#include <QStringList>
#include <QUrl>

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <vector>

namespace Workbench {

/**
 * One visit to the services of a source, by a thread that may wait for them; cancel() ends it from
 * any other. Nothing else is ever asked of a server.
 */
class SourceVisit
{
public:
    /** What was found; where one of two services failed, what the other one has. */
    struct Findings
    {
        StationListing listing;
        QStringList problems; /**< each names host and cause */
        bool hasAny{false};   /**< at least one service has answered */
    };

    /** What became of asking a service for a sign of life. */
    struct Answer
    {
        QString service;
        bool ok{false};
        QString text; /**< what answered and how long that took, or host and cause */
    };

    /** Lists stations and channels; @p window is that in which channels of the past have to be in
     *  force, those of today if it is unset. */
    Findings list(const DataSource &source, const Tellarix::Core::TimeWindow &window);
    /** Asks every service of a source, and whether the login is taken where one is known. */
    std::vector<Answer> test(const DataSource &source);

    /** Ends what goes on, and what is begun later. Any thread may call it. */
    void cancel();
    bool isCanceled() const { return _isCanceled; }

    /** How far list() is; any thread may ask. */
    int stationCount() const { return _stationCount; }
    qint64 byteCount() const { return _byteCount; }

private:
    using Cancel = std::function<void()>;

    /** Has something cancelled too for as long as it lives. */
    class Part
    {
    public:
        Part(SourceVisit &visit, Cancel cancel);
        ~Part();
        Part(const Part &) = delete;
        Part &operator=(const Part &) = delete;

    private:
        SourceVisit &_visit;
        std::list<Cancel>::iterator _place;
    };

    bool listLive(const QString &address, StationListing *listing, QString *error);
    bool listArchive(const QString &address, const Tellarix::Core::TimeWindow &window,
                     StationListing *listing, QString *error);
    Answer testLive(const QString &address);
    Answer testWeb(const QString &service, const QString &address);
    bool askWithLogin(const QString &address, QString *text);
    bool ask(const QUrl &url, const QString &address, QString *text);

    std::mutex _mutex;
    std::list<Cancel> _parts;
    std::atomic<bool> _isCanceled{false};
    std::atomic<int> _stationCount{0};
    std::atomic<qint64> _byteCount{0};
};

} // namespace Workbench
