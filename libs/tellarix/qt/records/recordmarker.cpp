// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordmarker.h>

#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <QPainter>

namespace Tellarix {
namespace Gui {

RecordMarker::RecordMarker(const Core::Time &time, const QString &text)
    : _time(time), _correctedTime(time), _text(text)
{}

RecordMarker::RecordMarker(const RecordMarker &other)
{
    *this = other;
}

RecordMarker &RecordMarker::operator=(const RecordMarker &other)
{
    if (&other == this)
        return *this;

    update();
    _time = other._time;
    _correctedTime = other._correctedTime;
    _text = other._text;
    _description = other._description;
    _color = other._color;
    _modifiedColor = other._modifiedColor;
    _alignment = other._alignment;
    _movable = other._movable;
    _moveCopy = other._moveCopy;
    _enabled = other._enabled;
    _hidden = other._hidden;
    update();
    return *this;
}

RecordMarker::~RecordMarker()
{
    if (_parent != nullptr)
        _parent->detachMarker(this);
}

RecordMarker *RecordMarker::clone() const
{
    return new RecordMarker(*this);
}

void RecordMarker::setTime(const Core::Time &time)
{
    if (time == _time && time == _correctedTime)
        return;

    update();
    _time = time;
    _correctedTime = time;
    update();
}

void RecordMarker::setCorrectedTime(const Core::Time &time)
{
    change(_correctedTime, time);
}

void RecordMarker::reset()
{
    setCorrectedTime(_time);
}

void RecordMarker::setText(const QString &text)
{
    change(_text, text);
}

QString RecordMarker::renderText() const
{
    return _text;
}

QColor RecordMarker::color() const
{
    return _color.isValid() ? _color : Scheme::Current().records.marker;
}

void RecordMarker::setColor(const QColor &color)
{
    change(_color, color);
}

QColor RecordMarker::modifiedColor() const
{
    return _modifiedColor.isValid() ? _modifiedColor : color();
}

void RecordMarker::setModifiedColor(const QColor &color)
{
    change(_modifiedColor, color);
}

void RecordMarker::setAlignment(Qt::Alignment alignment)
{
    change(_alignment, alignment);
}

void RecordMarker::setEnabled(bool enable)
{
    change(_enabled, enable);
}

void RecordMarker::setHidden(bool hidden)
{
    change(_hidden, hidden);
}

void RecordMarker::draw(QPainter &painter, RecordWidget *, int x, int top, int bottom,
                        const QColor &color, qreal lineWidth)
{
    painter.setPen(QPen(color, lineWidth));
    painter.drawLine(x, top, x, bottom);
}

/** Repaints where the marker stands: called before and after it changes. */
void RecordMarker::update()
{
    if (_parent != nullptr)
        _parent->updateCanvas();
}

template <typename T>
void RecordMarker::change(T &member, const T &value)
{
    if (member == value)
        return;

    update();
    member = value;
    update();
}

} // namespace Gui
} // namespace Tellarix
