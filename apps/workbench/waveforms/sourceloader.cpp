// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourceloader.h"

#include "spectrograms/spectrogramrow.h"

#include <norvu/gui/trace.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/qt/records/recordstreamthread.h>

namespace Workbench {

SourceLoader::SourceLoader(const std::string &source)
    : TraceFileLoader(new Tellarix::Gui::RecordStreamThread(source)), _source(source)
{}

bool SourceLoader::isUsable(QString *error) const
{
    std::string reason;
    if (Tellarix::IO::RecordStream::Create(_source, &reason))
        return true;
    *error = QString::fromStdString(reason);
    return false;
}

void SourceLoader::receivedRecord(Tellarix::Record *record)
{
    if (record && record->dataType() == Tellarix::DataType::Char)
        ++_textCount;
    else if (record)
        ++_waveformCount;
    TraceFileLoader::receivedRecord(record);
}

Norvu::Gui::Trace *SourceLoader::makeRow(const QString &label) const
{
    return new Norvu::Gui::Trace(label, new SpectrogramRow, Qt::black);
}

} // namespace Workbench
