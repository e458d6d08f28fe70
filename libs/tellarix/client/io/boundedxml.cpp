// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/boundedxml_p.h>

#include <tellarix/core/strings.h>

#include <utility>

namespace Tellarix {
namespace IO {

namespace {

constexpr qint64 LongestText =
    256 << 10; // of a tag, too, whose attributes are compared with each other
constexpr int DeepestElement = 100;
constexpr qint64 BytesBetweenTellings = 64 << 10;

} // namespace

BoundedXml::BoundedXml(QIODevice &device, const QString &name, Warn warn, Progress progress)
    : _device(device, LongestText, [this](qint64 done) { return goesOn(done); }),
      _total(device.isSequential() ? -1 : device.size()), _name(name), _warn(std::move(warn)),
      _progress(std::move(progress)), _xml(&_device)
{}

BoundedXml::~BoundedXml() = default;

bool BoundedXml::result(QString *error)
{
    if (_xml.hasError())
        rememberFault(_xml.errorString());
    if (isGoing())
        return true;
    if (error)
        *error = _fault;
    return false;
}

QString BoundedXml::place() const
{
    QString text = QString("%1: line %2").arg(_name, QString::number(_xml.lineNumber()));
    if (!_elements.empty())
        text += QString(", element <%1>").arg(_elements.back());
    return text + ": ";
}

void BoundedXml::rememberFault(const QString &text)
{
    if (isGoing())
        _fault = place() + (_device.exceeded()
                                ? QString("a text of more than %1 kB").arg(LongestText >> 10)
                                : text);
}

void BoundedXml::warn(const QString &text)
{
    if (_warn)
        _warn(place() + text);
}

void BoundedXml::tellProgress()
{
    _told = _device.done();
    if (_progress && !_progress(_told, _total))
        end();
}

bool BoundedXml::goesOn(qint64 done)
{
    if (done - _told >= BytesBetweenTellings && isGoing())
        tellProgress();
    return !_ended;
}

void BoundedXml::skip()
{
    for (int depth = 1; depth > 0 && isGoing() && !_xml.atEnd();) {
        switch (_xml.readNext()) {
        case QXmlStreamReader::StartElement:
            _device.mark();
            if (++depth > DeepestElement)
                return rememberFault(
                    QString("elements nest more than %1 deep").arg(DeepestElement));
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
}

bool BoundedXml::enterRoot()
{
    while (!_xml.atEnd() && !_xml.isStartElement()) {
        if (_xml.readNext() == QXmlStreamReader::DTD) {
            rememberFault("a document type is not taken");
            return false;
        }
    }
    if (_xml.hasError())
        return false;
    _elements.push_back(_xml.name().toString());
    return true;
}

void BoundedXml::leaveRoot()
{
    while (isGoing() && !_xml.atEnd())
        _xml.readNext();
}

std::string BoundedXml::readText()
{
    return _xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
}

std::optional<double> BoundedXml::readNumber()
{
    const std::string text = readText();
    double value = 0;
    if (Core::fromString(value, text))
        return value;
    if (!_xml.hasError())
        warn(QString("\"%1\" is no number").arg(text.c_str()));
    return std::nullopt;
}

Core::Time BoundedXml::readTime()
{
    return timeOf(readText());
}

Core::Time BoundedXml::timeOf(const std::string &text)
{
    const Core::Time time = Core::Time::FromString(text);
    if (!time.valid() && !_xml.hasError())
        warn(QString("\"%1\" is no time").arg(text.c_str()));
    return time;
}

} // namespace IO
} // namespace Tellarix
