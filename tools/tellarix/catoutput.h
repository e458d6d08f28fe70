// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/archivewriter.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QSaveFile>
#include <QString>

#include <memory>

namespace Tellarix {
namespace Tool {

/** Where records are written to. */
class CatOutput
{
public:
    using Outcome = IO::ArchiveWriter::Outcome;

    virtual ~CatOutput();

    virtual Outcome add(const Record &record) = 0;
    /** Writes what is held back, where others may read it already; false if that fails. */
    virtual bool flush() = 0;
    /** Called once at the end; false if what came can't be kept. */
    virtual bool finish() = 0;
    /** What was written, for the user. */
    virtual QString summary(qint64 records, qint64 known) const = 0;
    /** Why something failed or was refused. */
    virtual QString errorString() const = 0;
};

/** One file of miniSEED. */
class FileOutput : public CatOutput
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::FileOutput)

public:
    /** @param appends  to what is there; otherwise the file appears whole in finish(), if anything
     *                  has come */
    FileOutput(const QString &path, bool appends);

    /** False with an errorString() if the file can't be written. */
    bool open();
    Outcome add(const Record &record) override;
    bool flush() override;
    bool finish() override;
    QString summary(qint64 records, qint64 known) const override;
    QString errorString() const override { return _errorString; }

private:
    bool write();

    const QString _path;
    const bool _appends;
    QSaveFile _file;
    IO::MiniSeedPacker _packer;
    QByteArray _pending;
    qint64 _size{0};
    QString _errorString;
};

/** A tree of day files. */
class ArchiveOutput : public CatOutput
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::ArchiveOutput)

public:
    explicit ArchiveOutput(const QString &root);

    Outcome add(const Record &record) override { return _writer.add(record); }
    bool flush() override { return _writer.flush(); }
    bool finish() override { return _writer.flush(); }
    QString summary(qint64 records, qint64 known) const override;
    QString errorString() const override { return QString::fromStdString(_writer.errorString()); }

private:
    const QString _root;
    IO::ArchiveWriter _writer;
};

} // namespace Tool
} // namespace Tellarix
