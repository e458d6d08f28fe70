// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QString>

class QCommandLineParser;

namespace Tellarix {
namespace Tool {

/** A subcommand of the command-line tool: its options and its work. */
class Command
{
public:
    virtual ~Command();

    /** The word that calls it. */
    virtual QString name() const = 0;
    /** What it does, in one line for the list of commands. */
    virtual QString summary() const = 0;
    /** Adds its options and arguments, and what a user ought to know beside them. */
    virtual void describe(QCommandLineParser &parser) const = 0;
    /** Takes its options and @p arguments; false with the reason in @p error if they are wrong. */
    virtual bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                               QString *error) = 0;
    /** Does the work, in a thread of its own; the result is the exit status. */
    virtual int run() = 0;
    /** Makes run() end soon; called from another thread. */
    virtual void interrupt() {}
    /** Whether an interrupt is its usual end, behind which the exit status is that of run(). */
    virtual bool endsByInterrupt() const { return false; }
};

/** Writes to standard output; false, with a message on standard error, if that fails. */
bool printOutput(const QString &text);
/** Collects lines of standard output, since each call of printOutput() is one of the system. */
class Output
{
public:
    /** False, with a message on standard error, if what is written now and then can't be. */
    bool add(const QString &text);
    /** Writes what is still held back. */
    bool flush();

private:
    QString _pending;
};

/** Writes "tellarix: MESSAGE" to standard error. */
void printError(const QString &message);

} // namespace Tool
} // namespace Tellarix
