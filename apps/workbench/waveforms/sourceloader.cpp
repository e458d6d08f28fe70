// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourceloader.h"

#include "bench/rowaddition.h"

#include <norvu/gui/trace.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/qt/records/recordstreamthread.h>
#include <tellarix/qt/records/recordwidget.h>

namespace Workbench {

SourceLoader::SourceLoader(const std::string &source, const RowAddition *addition)
    : TraceFileLoader(new Tellarix::Gui::RecordStreamThread(source)), _source(source),
      _addition(addition)
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
    return _addition ? new Norvu::Gui::Trace(label, _addition->makeTraces(), Qt::black)
                     : TraceFileLoader::makeRow(label);
}

} // namespace Workbench
