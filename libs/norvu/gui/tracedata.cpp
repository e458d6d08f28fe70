// SPDX-License-Identifier: LGPL-3.0-or-later

#include "trace.h"

#include "colorbar_p.h"
#include "rowlabel_p.h"

#include <tellarix/core/datamodel/utils.h>

#include <algorithm>

namespace Norvu {
namespace Gui {

void Trace::setLabel(const QString &label)
{
    _label = label;
    _labelWidget->setTexts(QStringLiteral("<b>%1</b>").arg(_label), _label, QString());
}

void Trace::setLabelPale(bool pale)
{
    _labelWidget->setEnabled(!pale);
}

void Trace::setDescription(const QString &description)
{
    if (_label.isEmpty())
        _labelWidget->setTexts(description, QString(), description);
    else
        _labelWidget->setTexts(QStringLiteral("<b>%1</b> %2").arg(_label, description), _label,
                               ' ' + description);
}

QString Trace::labelText() const
{
    return _labelWidget->text();
}

void Trace::setColor(const QColor &color)
{
    _colorBar->setColor(color);
}

const QColor &Trace::color() const
{
    return _colorBar->color();
}

void Trace::setColorBarWidth(int width)
{
    _colorBar->setVisible(width >= 1);
    _colorBar->setFixedWidth(std::max(width, 0));
}

void Trace::setStatic(bool isStatic)
{
    _static = isStatic;
    setMouseTracking(!_static);
}

void Trace::setData(int key, const QVariant &value)
{
    for (TraceItemData &entry : _itemData) {
        if (entry.key != key)
            continue;
        if (entry.value != value)
            entry.value = value;
        return;
    }
    _itemData.append({key, value});
}

QVariant Trace::data(int key) const
{
    for (const TraceItemData &entry : _itemData) {
        if (entry.key == key)
            return entry.value;
    }
    return QVariant();
}

bool Trace::setMetaData(int slot, Tellarix::DataModel::Stream *stream)
{
    if (slot < 0)
        return false;

    if (slot >= _metaData.size())
        _metaData.resize(slot + 1);
    _metaData[slot] = stream;
    return true;
}

Tellarix::DataModel::Stream *Trace::metaData(int slot) const
{
    return _metaData.value(slot, nullptr);
}

Tellarix::DataModel::WaveformStreamID Trace::waveformID(int slot) const
{
    if (const Tellarix::DataModel::Stream *stream = metaData(slot))
        return Tellarix::DataModel::waveformStreamID(stream);

    const auto code = [this](TraceDataKey key) { return data(key).toString().toStdString(); };
    return {code(TraceNetworkCode), code(TraceStationCode), code(TraceLocationCode),
            code(TraceChannelCode)};
}

} // namespace Gui
} // namespace Norvu
