// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordlabel.h>

#include <QPainter>

#include <algorithm>

namespace Tellarix {
namespace Gui {

namespace {

constexpr int ItemSpacing = 4;
constexpr QRgb DisabledColor = 0xffa0a0a0;

int widthOf(const RecordLabel::Item &item)
{
    return item.width >= 0 ? item.width : QFontMetrics(item.font).horizontalAdvance(item.text);
}

} // namespace

RecordLabel::RecordLabel(int items, QWidget *parent, const char *name) : QWidget(parent)
{
    setObjectName(QString::fromUtf8(name));
    resizeItems(items);
}

RecordLabel::~RecordLabel() = default;

void RecordLabel::resizeItems(int count)
{
    Item empty;
    empty.font = font();
    while (_items.size() < count)
        _items.append(empty);
}

RecordLabel::Item *RecordLabel::itemToChange(int item)
{
    if (item < 0)
        return nullptr;
    resizeItems(item + 1);
    updateGeometry();
    update();
    return &_items[item];
}

void RecordLabel::setText(const QString &text, int item)
{
    if (Item *target = itemToChange(item))
        target->text = text;
}

void RecordLabel::setFont(const QFont &font, int item)
{
    if (Item *target = itemToChange(item))
        target->font = font;
}

void RecordLabel::setColor(const QColor &color, int item)
{
    if (Item *target = itemToChange(item))
        target->color = color;
}

void RecordLabel::setWidth(int width, int item)
{
    if (Item *target = itemToChange(item))
        target->width = width;
}

QString RecordLabel::text(int item) const
{
    return item >= 0 && item < _items.size() ? _items[item].text : QString();
}

void RecordLabel::setLabelEnabled(bool enable)
{
    if (enable == _labelEnabled)
        return;

    _labelEnabled = enable;
    update();
}

QColor RecordLabel::effectiveColor(int item) const
{
    if (!_labelEnabled || !isEnabled())
        return QColor(DisabledColor);
    const bool hasColor = item >= 0 && item < _items.size() && _items[item].color.isValid();
    return hasColor ? _items[item].color : palette().color(foregroundRole());
}

StandardRecordLabel::StandardRecordLabel(int items, QWidget *parent, const char *name)
    : RecordLabel(items, parent, name)
{}

QSize StandardRecordLabel::sizeHint() const
{
    QSize size(0, fontMetrics().height());
    for (const Item &item : labelItems()) {
        if (item.text.isEmpty())
            continue;
        size.rwidth() += widthOf(item) + (size.width() > 0 ? ItemSpacing : 0);
        size.setHeight(std::max(size.height(), QFontMetrics(item.font).height()));
    }
    return size;
}

void StandardRecordLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    int x = 0;
    for (int i = 0; i < itemCount(); ++i) {
        if (item(i).text.isEmpty())
            continue;
        const QRect area(x, 0, widthOf(item(i)), height());
        painter.setFont(item(i).font);
        painter.setPen(effectiveColor(i));
        painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter, item(i).text);
        x += area.width() + ItemSpacing;
    }
}

} // namespace Gui
} // namespace Tellarix
