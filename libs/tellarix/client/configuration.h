// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

#include <QString>
#include <QStringList>
#include <QVariant>

#include <map>

namespace Tellarix {
namespace Client {

/**
 * Settings of a program from several layers: defaults, then files in the order in which they were
 * read, then overrides from the command line. A later layer wins key by key.
 *
 * Files are INI files as QSettings writes them; the key "streams/url" is the entry "url" in the
 * section "[streams]". Texts are UTF-8. A ';' or '#' begins a comment only where a line begins with
 * it; within a value, in quotes or not, it is part of the value.
 */
class TELLARIX_CLIENT_API Configuration
{
public:
    /** Sets the value that holds when nothing else does. */
    void setDefault(const QString &key, const QVariant &value);
    /** Sets a value that comes before all files. */
    void setOverride(const QString &key, const QVariant &value);
    /**
     * Reads a file on top of what is there.
     * @return false, with the reason in @p error, if it can't be read or is not well formed; then
     *         nothing has changed. A missing file is an error too.
     */
    bool readFile(const QString &fileName, QString *error = nullptr);

    bool contains(const QString &key) const;
    /** The value of a key, an invalid QVariant if it is unknown. */
    QVariant value(const QString &key) const;
    /** The value as one text, empty if the key is unknown. */
    QString string(const QString &key) const;
    /** The value as a list: a text with commas in a file has several entries. */
    QStringList strings(const QString &key) const { return value(key).toStringList(); }
    /** The value as a number; false, leaving @p result alone, if it isn't one. */
    bool number(const QString &key, double &result) const;
    bool integer(const QString &key, int &result) const;
    bool boolean(const QString &key, bool &result) const;

    /**
     * Checks the values of the keys that @p schema knows; its values are types: "text", "number",
     * "integer" or "boolean".
     * @return false, with the key, its value and its origin in @p error, if one is of another type
     */
    bool conformsTo(const Configuration &schema, QString *error = nullptr) const;

    /** All known keys in alphabetical order. */
    QStringList keys() const;
    /** What a key's value comes from, for messages: a file name, "command line" or "default"; empty
     *  if the key is unknown. */
    QString origin(const QString &key) const;

private:
    struct Entry
    {
        QVariant value;
        QString origin;
    };

    using Layer = std::map<QString, Entry>;

    const Entry *find(const QString &key) const;

    Layer _defaults;
    Layer _files;
    Layer _overrides;
};

} // namespace Client
} // namespace Tellarix
