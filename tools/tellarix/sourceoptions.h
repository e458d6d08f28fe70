// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <QStringList>

#include <vector>

class QCommandLineParser;

namespace Tellarix {
namespace Tool {

/** Sources of records, and what is wanted of them. */
struct SourceRequest
{
    QStringList urls;
    std::vector<StreamCodesCPtr> streams; /**< patterns; none stands for all */
    Core::TimeWindow window;              /**< ends may be unset */
    double timeoutSeconds{0};             /**< 0 waits for ever */
};

/** Adds the argument URL... and the options --streams, --from, --to and --timeout. */
void addSourceOptions(QCommandLineParser &parser);

/** Reads them; false with the reason in @p error if they are wrong. */
bool readSources(const QCommandLineParser &parser, const QStringList &arguments,
                 SourceRequest *request, QString *error);

/** True for files, trees of them and pipes. */
bool isLocal(const QString &url);

/** The URL without names of users and passwords, also those of sources within it. */
QString shownUrl(const QString &url);

} // namespace Tool
} // namespace Tellarix
