// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/fieldtext_p.h>

#include <QLocale>

namespace Tellarix {
namespace IO {

QByteArray numberText(const std::optional<double> &value)
{
    return value ? QByteArray::number(*value, 'g', QLocale::FloatingPointShortest) : QByteArray();
}

QByteArray quotedIfNeeded(const std::string &text)
{
    QByteArray field = QByteArray::fromStdString(text);
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return field;
    return '"' + field.replace('"', "\"\"") + '"';
}

QJsonValue orNull(const std::string &text)
{
    return text.empty() ? QJsonValue() : QJsonValue(QString::fromStdString(text));
}

} // namespace IO
} // namespace Tellarix
