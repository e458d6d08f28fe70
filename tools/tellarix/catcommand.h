// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "catoutput.h"
#include "command.h"
#include "recordpump.h"

#include <QCoreApplication>
#include <QSet>

#include <memory>

namespace Tellarix {
namespace Tool {

/** Writes the records of files and servers to a file or to a tree of day files. */
class CatCommand : public Command
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::CatCommand)

public:
    QString name() const override { return QStringLiteral("cat"); }
    QString summary() const override;
    void describe(QCommandLineParser &parser) const override;
    bool readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                       QString *error) override;
    int run() override;
    void interrupt() override { _pump.end(); }

private:
    bool openOutput();
    bool isRead(const QString &file) const;
    bool take(const Record &record);
    bool write(const Record &record);
    bool fail();
    void tellOnce(const QString &message);

    RecordPump _pump;
    QString _file;
    QString _folder;
    bool _appends{false};
    bool _replaces{false};
    bool _cuts{false};

    std::unique_ptr<CatOutput> _output;
    bool _isComplete{true}; /**< every record could be kept */
    bool _isFailed{false};  /**< the output can't be written */
    int _secondsHeld{0};    /**< since the output was flushed */
    qint64 _written{0};
    qint64 _known{0};
    QSet<QString> _told;
};

} // namespace Tool
} // namespace Tellarix
