// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventreader.h>

#include <tellarix/client/io/eventtablereader_p.h>
#include <tellarix/client/io/quakemlreader_p.h>

#include <QFile>
#include <QFileInfo>

namespace Tellarix {
namespace IO {

namespace {

constexpr int HeadSize = 64 << 10; // a comment may come first

bool fail(const QString &name, const QString &cause, QString *error)
{
    if (error)
        *error = QString("%1: %2").arg(name, cause);
    return false;
}

bool failUnknown(const QString &name, QString *error)
{
    return fail(name, "neither QuakeML nor a table of events", error);
}

QByteArray firstLine(const QByteArray &text)
{
    const int end = text.indexOf('\n');
    return (end < 0 ? text : text.left(end)).toLower();
}

bool readKnown(QIODevice &device, const QString &name, const EventReadHandler &handler,
               QString *error)
{
    const EventFormat format = eventFormatOf(device.peek(HeadSize));
    switch (format) {
    case EventFormat::QuakeML:
        return QuakeMLReader(device, name, handler).read(error);
    case EventFormat::Csv:
    case EventFormat::FdsnText:
        return EventTableReader(device, name, handler, format).read(error);
    case EventFormat::Unknown:
        break;
    }
    return failUnknown(name, error);
}

} // namespace

EventFormat eventFormatOf(const QByteArray &head)
{
    QByteArray text = head;
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    text = text.trimmed();
    // A text in UTF-16 says so by its byte order mark.
    const bool isWide = text.startsWith("\xFF\xFE") || text.startsWith("\xFE\xFF");
    if (isWide || (text.startsWith('<') && text.contains("quakeml")))
        return EventFormat::QuakeML;
    const QByteArray line = firstLine(text);
    if (line.startsWith('#') && line.contains('|') && line.contains("eventid"))
        return EventFormat::FdsnText;
    if (line.contains(',') && line.contains("time") && line.contains("latitude"))
        return EventFormat::Csv;
    return EventFormat::Unknown;
}

bool openEventFile(QFile &file, QString *error)
{
    const QString name = file.fileName();
    const QFileInfo info(name);
    // A pipe that nobody writes to would be waited for without end.
    if (info.exists() && !info.isFile())
        return fail(name, "is no file", error);
    if (!file.open(QIODevice::ReadOnly))
        return fail(name, file.errorString(), error);
    return eventFormatOf(file.peek(HeadSize)) != EventFormat::Unknown || failUnknown(name, error);
}

bool readEvents(QIODevice &device, const QString &name, const EventReadHandler &handler,
                QString *error)
{
    const bool read = readKnown(device, name, handler, error);
    // A device that breaks looks like one that ends.
    const auto *file = qobject_cast<QFileDevice *>(&device);
    if (!file || file->error() == QFileDevice::NoError)
        return read;
    return fail(name, file->errorString(), error);
}

} // namespace IO
} // namespace Tellarix
