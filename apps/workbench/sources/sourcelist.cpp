// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourcelist.h"

#include <tellarix/client/io/savefile.h>
#include <tellarix/core/environment.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto BuiltInFile = "sources/sources.json";
constexpr auto UserFile = "sources.json";

QString pathIn(const char *folder, const char *name)
{
    return QDir(QString::fromUtf8(folder)).filePath(name);
}

template <typename Sources>
auto iteratorOf(Sources &sources, const QString &name)
{
    return std::find_if(sources.begin(), sources.end(),
                        [&](const DataSource &source) { return source.name == name; });
}

bool readFile(const QString &name, DataSourceFile *content, QString *error)
{
    QFile file(name);
    if (!file.open(QFile::ReadOnly)) {
        *error = QString("%1: %2").arg(name, file.errorString());
        return false;
    }
    QString cause;
    const bool ok = parseDataSources(file.readAll(), content, &cause);
    *error = QString("%1: %2").arg(name, cause);
    return ok;
}

} // namespace

SourceList::SourceList(const QString &builtInFile, const QString &userFile, QObject *parent)
    : QObject(parent), _builtInFile(builtInFile), _userFile(userFile)
{}

SourceList::SourceList(QObject *parent)
    : SourceList(pathIn(Environment::Instance()->shareDirectory(), BuiltInFile),
                 pathIn(Environment::Instance()->configurationDirectory(), UserFile), parent)
{}

QStringList SourceList::read()
{
    QStringList problems;
    QString error;
    DataSourceFile builtIn;
    if (!readFile(_builtInFile, &builtIn, &error))
        problems.append(error);
    DataSourceFile own;
    if (QFileInfo::exists(_userFile) && !readFile(_userFile, &own, &error))
        problems.append(error + keepAside());
    for (DataSource &source : own.sources)
        source.isOwn = true;
    _builtIn = builtIn.sources;
    _own = own;
    emit changed();
    return problems;
}

/** Gives the user's file another name; what is said of it. */
QString SourceList::keepAside() const
{
    QString aside = _userFile + ".broken";
    for (int number = 2; QFileInfo::exists(aside); ++number)
        aside = QString("%1.broken%2").arg(_userFile).arg(number);
    return QFile::rename(_userFile, aside) ? tr("; it is kept as %1").arg(aside)
                                           : tr("; it can't be renamed");
}

QVector<DataSource> SourceList::all() const
{
    QVector<DataSource> sources = _own.sources;
    for (const DataSource &source : _builtIn) {
        if (iteratorOf(_own.sources, source.name) == _own.sources.end())
            sources.append(source);
    }
    for (DataSource &source : sources)
        source.isHidden = _own.hidden.contains(source.name);
    std::sort(sources.begin(), sources.end(), [](const DataSource &a, const DataSource &b) {
        return QString::localeAwareCompare(a.name, b.name) < 0;
    });
    return sources;
}

DataSource SourceList::find(const QString &name) const
{
    const QVector<DataSource> sources = all();
    const auto source = iteratorOf(sources, name);
    return source == sources.end() ? DataSource() : *source;
}

bool SourceList::isBuiltIn(const QString &name) const
{
    return iteratorOf(_builtIn, name) != _builtIn.end();
}

bool SourceList::set(const DataSource &source, const QString &formerName, QString *error)
{
    if (!checkDataSource(source, error))
        return false;
    if (source.name != formerName && !find(source.name).name.isEmpty()) {
        *error = tr("%1: there is a source of this name").arg(source.name);
        return false;
    }
    DataSourceFile file = _own;
    const auto former = iteratorOf(file.sources, formerName);
    if (former == file.sources.end())
        file.sources.append(source);
    else
        *former = source;
    iteratorOf(file.sources, source.name)->isOwn = true;
    return write(file, error);
}

bool SourceList::remove(const QString &name, QString *error)
{
    DataSourceFile file = _own;
    const auto source = iteratorOf(file.sources, name);
    if (source == file.sources.end()) {
        *error = tr("%1: a built-in source can be hidden, not removed").arg(name);
        return false;
    }
    file.sources.erase(source);
    file.hidden.removeAll(name);
    return write(file, error);
}

bool SourceList::setHidden(const QString &name, bool hidden, QString *error)
{
    DataSourceFile file = _own;
    file.hidden.removeAll(name);
    if (hidden)
        file.hidden.append(name);
    return write(file, error);
}

bool SourceList::write(const DataSourceFile &file, QString *error)
{
    QDir().mkpath(QFileInfo(_userFile).path());
    QSaveFile device(_userFile);
    const QByteArray text = dataSourcesText(file);
    if (!device.open(QSaveFile::WriteOnly) || !IO::writeWhole(device, text) ||
        !IO::commitWhole(device)) {
        *error = QString("%1: %2").arg(_userFile, device.errorString());
        return false;
    }
    _own = file;
    emit changed();
    return true;
}

} // namespace Workbench
