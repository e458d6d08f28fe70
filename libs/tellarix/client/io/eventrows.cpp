// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/databaseschema.h>
#include <tellarix/client/io/eventrows_p.h>

namespace Tellarix {
namespace IO {

std::string joined(const std::vector<std::string> &texts, const char *before)
{
    std::string list;
    for (const std::string &text : texts)
        list += (list.empty() ? "" : ", ") + (before + text);
    return list;
}

QVariant storedText(const std::string &text)
{
    return text.empty() ? QVariant(QVariant::String) : QString::fromStdString(text);
}

void RowChecker::key(const char *name, std::string &text)
{
    if (_problem.isEmpty() && QString::fromStdString(text).size() > DatabaseSchema::KeyLength)
        _problem = QString("its %1 is longer than %2 characters")
                       .arg(QLatin1String(name))
                       .arg(DatabaseSchema::KeyLength);
}

void RowChecker::time(const char *name, Core::Time &time)
{
    if (!_problem.isEmpty() || !time.valid())
        return;
    const int year = time.fields().year;
    if (year < 1 || year > 9999)
        _problem = QString("the year %1 of %2 can't be stored").arg(year).arg(QLatin1String(name));
}

void RowWriter::real(const char *, const char *, std::optional<double> &value)
{
    _values << (value && std::isfinite(*value) ? QVariant(*value) : QVariant(QVariant::Double));
}

void RowWriter::number(const char *, const char *, double &value)
{
    _values << (std::isfinite(value) ? QVariant(value) : QVariant(QVariant::Double));
}

void RowWriter::integer(const char *, std::optional<int> &value)
{
    _values << (value ? QVariant(*value) : QVariant(QVariant::Int));
}

void RowWriter::time(const char *, Core::Time &time)
{
    if (time.valid())
        _values << QString::fromStdString(_database.timeToString(time)) << time.fields().usec;
    else
        _values << QVariant(QVariant::String) << 0;
}

void RowReader::real(const char *, const char *, std::optional<double> &value)
{
    const QVariant stored = next();
    value.reset();
    if (!stored.isNull())
        value = stored.toDouble();
}

void RowReader::number(const char *, const char *, double &value)
{
    const QVariant stored = next();
    value = stored.isNull() ? std::numeric_limits<double>::quiet_NaN() : stored.toDouble();
}

void RowReader::integer(const char *, std::optional<int> &value)
{
    const QVariant stored = next();
    value.reset();
    if (!stored.isNull())
        value = stored.toInt();
}

void RowReader::time(const char *, Core::Time &time)
{
    const QByteArray text = next().toByteArray();
    const int usecs = next().toInt();
    time = _database.stringToTime(text.constData());
    if (time.valid())
        time.setUSecs(usecs);
}

} // namespace IO
} // namespace Tellarix
