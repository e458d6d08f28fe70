// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "command.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/io/streamsummary.h>
#include <tellarix/core/records/streamcodes.h>

#include <QCoreApplication>
#include <QStringList>

#include <atomic>
#include <mutex>
#include <vector>

namespace Tellarix {
namespace Tool {

/** Tells what the streams of files and servers hold. */
class RecordsCommand : public Command
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::RecordsCommand)

public:
    QString name() const override { return QStringLiteral("records"); }
    QString summary() const override;
    void describe(QCommandLineParser &parser) const override;
    bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                       QString *error) override;
    int run() override;
    void interrupt() override;

private:
    bool read(const QString &url);
    bool open(IO::RecordStream &stream);
    void setStream(const IO::RecordStreamPtr &stream);

    QStringList _urls;
    Core::TimeWindow _window;
    std::vector<StreamCodesCPtr> _streams;
    bool _asJson{false};

    IO::StreamSummarizer _summarizer;
    std::atomic<bool> _interrupted{false};
    std::mutex _streamMutex;
    IO::RecordStreamPtr _stream; /**< the one that is being read */
};

} // namespace Tool
} // namespace Tellarix
