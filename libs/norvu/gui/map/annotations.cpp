// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/annotations.h>

#include <utility>

namespace Norvu {
namespace Gui {

AnnotationItem::~AnnotationItem()
{
    if (pool)
        pool->take(this);
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
    _items.append(item);
    return item;
}

bool Annotations::take(const AnnotationItem *item)
{
    const int index = _items.indexOf(const_cast<AnnotationItem *>(item));
    if (index < 0)
        return false;

    AnnotationItem *taken = _items.takeAt(index);
    taken->pool = nullptr;
    // The item may outlive the list, and with it the style that the list owns.
    if (taken->style == &_defaultStyle)
        taken->style = nullptr;
    return true;
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
    const QList<AnnotationItem *> items = std::exchange(_items, {});
    for (AnnotationItem *item : items) {
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
    for (AnnotationItem *item : qAsConst(_items)) {
        if (item->style == style)
            item->style = &_defaultStyle;
    }
}

} // namespace Gui
} // namespace Norvu
