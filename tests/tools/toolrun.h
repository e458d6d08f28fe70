// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

/** What came of a call of the command-line tool. */
struct Run
{
    int status{-1};
    QString output;
    QString errors;

    QJsonArray json() const { return QJsonDocument::fromJson(output.toUtf8()).array(); }
};

inline QString program()
{
    return QStringLiteral(NORVU_PROGRAMS "/tellarix");
}

/** Calls the tool, and waits for its end. */
inline Run run(const QStringList &arguments)
{
    QProcess process;
    process.start(program(), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}
