// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "client/httpserver.h"
#include "client/seedrecord.h"

#include <tellarix/core/strings.h>

/** The records that a server of data has, and which of them a request asks for. */
class FdsnData
{
public:
    /** Adds records of 100 samples at 1 Hz that follow each other. */
    void add(const char *id, const char *begin, int records)
    {
        const auto codes = Tellarix::StreamCodes::FromID(id);
        const auto time = Tellarix::Core::Time::FromString(begin);
        for (int i = 0; i < records; ++i) {
            const auto start = time + Tellarix::Core::TimeSpan(100.0 * i);
            _records.append(
                {codes, {start, start + Tellarix::Core::TimeSpan(100.0)}, seedRecord(id, start)});
        }
    }

    /** All records that share a moment with what a body asks for. */
    QByteArray asked(const QByteArray &body) const
    {
        QByteArray bytes;
        for (const QByteArray &line : body.split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            for (const Entry &entry : _records) {
                if (words.size() == 6 && matches(entry, words))
                    bytes += entry.bytes;
            }
        }
        return bytes;
    }
    HttpReply reply(const HttpAsked &request) const
    {
        const QByteArray bytes = asked(request.body);
        return bytes.isEmpty() ? HttpReply::Of(204) : HttpReply::Of(200, bytes, Type);
    }

    static constexpr const char *Type = "Content-Type: application/vnd.fdsn.mseed\r\n";

private:
    struct Entry
    {
        Tellarix::StreamCodesCPtr codes;
        Tellarix::Core::TimeWindow window;
        QByteArray bytes;
    };

    static bool matches(const Entry &entry, const QList<QByteArray> &words)
    {
        using Tellarix::Core::Time;
        using Tellarix::Core::wildcardMatch;
        const std::string location = words[2] == "--" ? "" : words[2].toStdString();
        return wildcardMatch(words[0].toStdString(), entry.codes->network()) &&
               wildcardMatch(words[1].toStdString(), entry.codes->station()) &&
               wildcardMatch(location, entry.codes->location()) &&
               wildcardMatch(words[3].toStdString(), entry.codes->channel()) &&
               entry.window.endTime() > Time::FromString(words[4].toStdString()) &&
               entry.window.startTime() <= Time::FromString(words[5].toStdString());
    }

    QVector<Entry> _records;
};
