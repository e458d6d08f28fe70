// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/configuration.h>

#include <tellarix/core/strings.h>

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryFile>

namespace Tellarix {
namespace Client {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Tellarix::Client::Configuration", text);
}

bool failed(const QString &reason, QString *error)
{
    if (error)
        *error = reason;
    return false;
}

/** Stands for a ';' within a value: a character that no text has. */
constexpr ushort Semicolon = 0xFDD0;

bool isEndOfLine(char c)
{
    return c == '\n' || c == '\r';
}

/** Index behind the value that begins at @p index, with each ';' outside of quotes replaced. */
int protectValue(QByteArray &ini, int index)
{
    const QByteArray replacement = QString(QChar(Semicolon)).toUtf8();
    bool isQuoted = false;
    for (; index < ini.size() && (isQuoted || !isEndOfLine(ini[index])); ++index) {
        if (ini[index] == '\\') {
            // Goes on in the next line if it is the last of its own, which may end in two bytes.
            index += ini.mid(index + 1, 2) == "\r\n" ? 2 : 1;
        } else if (ini[index] == '"') {
            isQuoted = !isQuoted;
        } else if (ini[index] == ';' && !isQuoted) {
            ini.replace(index, 1, replacement);
            index += replacement.size() - 1;
        }
    }
    return index;
}

/** QSettings takes any ';' outside of quotes for the beginning of a comment and drops the rest of
 *  the value, so that it must not see those within values. */
QByteArray withSemicolonsProtected(QByteArray ini)
{
    bool isLineStart = true;
    for (int i = 0; i < ini.size(); ++i) {
        const char c = ini[i];
        if (isEndOfLine(c)) {
            isLineStart = true;
        } else if (isLineStart && (c == ';' || c == '#' || c == '[')) {
            while (i + 1 < ini.size() && !isEndOfLine(ini[i + 1]))
                ++i;
        } else if (c == '=') {
            i = protectValue(ini, i + 1) - 1;
        } else if (c != ' ' && c != '\t') {
            isLineStart = false;
        }
    }
    return ini;
}

QString withSemicolons(QString text)
{
    return text.replace(QChar(Semicolon), QLatin1Char(';'));
}

QVariant withSemicolons(const QVariant &value)
{
    if (value.type() == QVariant::String)
        return withSemicolons(value.toString());
    if (value.type() != QVariant::StringList)
        return value;
    QStringList texts = value.toStringList();
    for (QString &text : texts)
        text = withSemicolons(text);
    return texts;
}

template <typename T>
bool read(const Configuration &configuration, const QString &key, T &result)
{
    return configuration.contains(key) &&
           Core::fromString(result, configuration.string(key).toStdString());
}

template <typename T>
bool isReadable(const Configuration &configuration, const QString &key)
{
    T value;
    return read(configuration, key, value);
}

bool isOfType(const Configuration &configuration, const QString &key, const QString &type)
{
    if (type == QLatin1String("number"))
        return isReadable<double>(configuration, key);
    if (type == QLatin1String("integer"))
        return isReadable<int>(configuration, key);
    if (type == QLatin1String("boolean"))
        return isReadable<bool>(configuration, key);
    return true;
}

} // namespace

void Configuration::setDefault(const QString &key, const QVariant &value)
{
    _defaults[key] = Entry{value, tr("default")};
}

void Configuration::setOverride(const QString &key, const QVariant &value)
{
    _overrides[key] = Entry{value, tr("command line")};
}

bool Configuration::readFile(const QString &fileName, QString *error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return failed(QStringLiteral("%1: %2").arg(fileName, file.errorString()), error);

    QTemporaryFile copy;
    const QByteArray content = withSemicolonsProtected(file.readAll());
    if (!copy.open() || copy.write(content) != content.size() || !copy.flush())
        return failed(QStringLiteral("%1: %2").arg(copy.fileName(), copy.errorString()), error);

    QSettings settings(copy.fileName(), QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    const QStringList keys = settings.allKeys();
    if (settings.status() == QSettings::FormatError)
        return failed(tr("%1: not a well-formed INI file").arg(fileName), error);
    if (settings.status() != QSettings::NoError)
        return failed(tr("%1: could not be read").arg(fileName), error);

    for (const QString &key : keys)
        _files[key] = Entry{withSemicolons(settings.value(key)), fileName};
    return true;
}

bool Configuration::contains(const QString &key) const
{
    return find(key) != nullptr;
}

QVariant Configuration::value(const QString &key) const
{
    const Entry *entry = find(key);
    return entry ? entry->value : QVariant();
}

QString Configuration::string(const QString &key) const
{
    // A URL with commas arrives as a list.
    const QVariant found = value(key);
    return found.type() == QVariant::StringList ? found.toStringList().join(QLatin1Char(','))
                                                : found.toString();
}

bool Configuration::number(const QString &key, double &result) const
{
    return read(*this, key, result);
}

bool Configuration::integer(const QString &key, int &result) const
{
    return read(*this, key, result);
}

bool Configuration::boolean(const QString &key, bool &result) const
{
    return read(*this, key, result);
}

bool Configuration::conformsTo(const Configuration &schema, QString *error) const
{
    for (const QString &key : schema.keys()) {
        const QString type = schema.string(key);
        if (contains(key) && !isOfType(*this, key, type)) {
            return failed(
                tr("%1: %2: \"%3\" is not of the type %4").arg(origin(key), key, string(key), type),
                error);
        }
    }
    return true;
}

QStringList Configuration::keys() const
{
    QStringList result;
    for (const Layer *layer : {&_defaults, &_files, &_overrides}) {
        for (const auto &item : *layer)
            result.append(item.first);
    }
    result.sort();
    result.removeDuplicates();
    return result;
}

QString Configuration::origin(const QString &key) const
{
    const Entry *entry = find(key);
    return entry ? entry->origin : QString();
}

const Configuration::Entry *Configuration::find(const QString &key) const
{
    for (const Layer *layer : {&_overrides, &_files, &_defaults}) {
        const auto found = layer->find(key);
        if (found != layer->end())
            return &found->second;
    }
    return nullptr;
}

} // namespace Client
} // namespace Tellarix
