// SPDX-License-Identifier: LGPL-3.0-or-later

#include "command.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace Tellarix {
namespace Tool {

Command::~Command() = default;

bool printOutput(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0)
        return true;

    printError(QCoreApplication::translate("Tellarix::Tool", "standard output: %1")
                   .arg(qt_error_string(errno)));
    return false;
}

bool Output::add(const QString &text)
{
    constexpr int Most = 1 << 16;
    _pending += text;
    return _pending.size() < Most || flush();
}

bool Output::flush()
{
    const QString text = std::move(_pending);
    _pending.clear();
    return printOutput(text);
}

void printError(const QString &message)
{
    std::fprintf(stderr, "tellarix: %s\n", qPrintable(message));
}

} // namespace Tool
} // namespace Tellarix
