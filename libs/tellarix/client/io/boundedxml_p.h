// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/boundeddevice_p.h>
#include <tellarix/core/time.h>

#include <QString>
#include <QXmlStreamReader>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * Walks through an XML text of unknown origin in bounded memory: no document type, whose entities
 * small files blow themselves up with, no endless texts and no endless nesting. Faults and warnings
 * tell source, line and element.
 */
class BoundedXml
{
protected:
    using Warn = std::function<void(const QString &text)>;
    using Progress = std::function<bool(qint64 done, qint64 total)>;

    /** @param progress  asked now and then, false ends the reading; may be empty, as @p warn */
    BoundedXml(QIODevice &device, const QString &name, Warn warn, Progress progress);
    virtual ~BoundedXml();

    /** Whether the current element is of a namespace that is read; others are passed over. */
    virtual bool isOurs() const = 0;

    /** Goes to the root element. */
    bool enterRoot();
    /** Reads what follows the root, which may be malformed too. */
    void leaveRoot();
    /** Calls a function for each child element of the current one, by its local name; it has to
     * read the element, or skip() it. */
    template <typename Function>
    void forEachChild(Function function);
    void skip();

    std::string readText();
    /** A number; a text that is none is told and left out, also by the next one. */
    std::optional<double> readNumber();
    /** A time; not valid if there is none. */
    Core::Time readTime();
    Core::Time timeOf(const std::string &text);

    QXmlStreamReader &xml() { return _xml; }
    const QXmlStreamReader &xml() const { return _xml; }
    void warn(const QString &text);
    void rememberFault(const QString &text);
    /** Ends the reading without a fault. */
    void end() { _ended = true; }
    void tellProgress();
    bool isGoing() const { return _fault.isEmpty() && !_ended; }
    /** True if all has been read; else @p error gets the fault, which is empty if it was ended. */
    bool result(QString *error);

private:
    /** Asks now and then as bytes come in, in the middle of an element too. */
    bool goesOn(qint64 done);
    QString place() const;

    BoundedDevice _device;
    qint64 _total;
    QString _name;
    Warn _warn;
    Progress _progress;
    qint64 _told{0}; /**< bytes at the last telling */
    QXmlStreamReader _xml;
    std::vector<QString> _elements; /**< from the root to the current one */
    QString _fault;                 /**< the first one, with its place */
    bool _ended{false};
};

template <typename Function>
void BoundedXml::forEachChild(Function function)
{
    while (isGoing() && _xml.readNextStartElement()) {
        _device.mark();
        _elements.push_back(_xml.name().toString());
        if (isOurs())
            function(_xml.name());
        else
            skip();
        if (_xml.hasError())
            rememberFault(_xml.errorString());
        _elements.pop_back();
    }
    if (_xml.hasError())
        rememberFault(_xml.errorString());
}

} // namespace IO
} // namespace Tellarix
