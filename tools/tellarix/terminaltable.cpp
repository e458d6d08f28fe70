// SPDX-License-Identifier: LGPL-3.0-or-later

#include "terminaltable.h"

#include "command.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>

#include <sys/ioctl.h>
#include <unistd.h>

namespace Tellarix {
namespace Tool {

namespace {

constexpr int UsualRows = 24;
constexpr int UsualColumns = 80;

winsize terminalSize()
{
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
        size.ws_row = UsualRows;
        size.ws_col = UsualColumns;
    }
    return size;
}

} // namespace

QString fittedText(const QString &text, int rows, int columns)
{
    QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const int room = std::max(1, rows - 1); // the cursor stands in one
    if (lines.size() > room) {
        const int left = lines.size() - room + 1;
        lines = lines.mid(0, room - 1);
        lines.append(
            QCoreApplication::translate("Tellarix::Tool::TerminalTable", "... and %1 more lines")
                .arg(left));
    }
    QString result;
    for (const QString &line : qAsConst(lines))
        result += line.left(columns) + QLatin1Char('\n');
    return result;
}

bool TerminalTable::IsPossible()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool TerminalTable::show(const QString &text)
{
    const winsize size = terminalSize();
    const QString shown = fittedText(text, size.ws_row, size.ws_col);
    const QString before = wiping();
    _lines = shown.count(QLatin1Char('\n'));
    return printOutput(before + shown);
}

bool TerminalTable::clear()
{
    const QString before = wiping();
    _lines = 0;
    return before.isEmpty() || printOutput(before);
}

QString TerminalTable::wiping() const
{
    return _lines > 0 ? QStringLiteral("\033[%1A\033[J").arg(_lines) : QString();
}

} // namespace Tool
} // namespace Tellarix
