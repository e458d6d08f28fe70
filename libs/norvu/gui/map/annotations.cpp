// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/annotations.h>

namespace Norvu {
namespace Gui {

AnnotationItem::~AnnotationItem()
{
    if (pool)
        pool->release(this);
    if (holder)
        *holder = nullptr;
}

Annotations::Annotations(QObject *parent) : QObject(parent)
{}

Annotations::~Annotations()
{
    clear();
}

AnnotationItem *Annotations::add(const QString &text)
{
    auto *item = new AnnotationItem;
    item->pool = this;
    item->text = text;
    item->style = style();
    item->index = _items.size();
    _items.append(item);
    return item;
}

const QList<AnnotationItem *> &Annotations::items() const
{
    if (_gaps > 0)
        closeGaps();
    return _items;
}

void Annotations::closeGaps() const
{
    _items.removeAll(nullptr);
    _gaps = 0;
    for (int i = 0; i < _items.size(); ++i)
        _items.at(i)->index = i;
}

bool Annotations::take(const AnnotationItem *item)
{
    // By the pointer alone: the item may be gone.
    const int index = item ? _items.indexOf(const_cast<AnnotationItem *>(item)) : -1;
    if (index < 0)
        return false;

    release(_items[index]);
    return true;
}

void Annotations::release(AnnotationItem *item)
{
    // Anybody can write an item's fields.
    if (_items.value(item->index) != item)
        return;

    _items[item->index] = nullptr;
    if (2 * ++_gaps > _items.size())
        closeGaps();
    item->pool = nullptr;
    // The item may outlive the list, and with it the style that the list owns.
    if (item->style == &_defaultStyle)
        item->style = nullptr;
}

bool Annotations::remove(const AnnotationItem *item)
{
    if (!take(item))
        return false;

    delete item;
    return true;
}

void Annotations::clear()
{
    const QList<AnnotationItem *> all = items();
    _items.clear();
    for (AnnotationItem *item : all) {
        item->pool = nullptr;
        delete item;
    }
}

void Annotations::setStyle(AnnotationStyle *style)
{
    if (style == _style)
        return;

    _style = style;
    if (style) {
        connect(style, SIGNAL(destroyed(QObject *)), this, SLOT(replaceStyle(QObject *)),
                Qt::UniqueConnection);
    }
}

void Annotations::replaceStyle(QObject *style)
{
    if (style == _style)
        _style = nullptr;
    for (AnnotationItem *item : items()) {
        if (item->style == style)
            item->style = &_defaultStyle;
    }
}

} // namespace Gui
} // namespace Norvu
