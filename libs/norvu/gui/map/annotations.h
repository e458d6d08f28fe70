// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/map/annotationstyle.h>

#include <QList>
#include <QObject>
#include <QRect>
#include <QString>

namespace Norvu {
namespace Gui {

class Annotations;

/** A label of the map. Destroying it takes it out of its pool. */
struct NORVU_GUI_API AnnotationItem
{
    AnnotationItem() = default;
    ~AnnotationItem();
    Q_DISABLE_COPY(AnnotationItem)

    Annotations *pool{nullptr}; /**< the list that holds it, or null */
    QString text;
    AnnotationStyle *style{nullptr}; /**< not owned; without one it is not painted */
    bool visible{true};              /**< wants to be painted */
    bool highlighted{false};
    QRect rect; /**< where it goes, in pixels of the canvas; null as long as it has no place */
    /** The pointer by which its owner holds it, which becomes null with the item; or null. */
    AnnotationItem **holder{nullptr};
    /** What the style has measured last, which takes it longer than all else. */
    mutable AnnotationStyle::Extent extent;
    int index{-1}; /**< in the pool's list */
};

/**
 * The labels of a map. Their order is their precedence: an earlier one is never left out for a
 * later one. What add() returns belongs to the caller, usually a symbol, until it is removed here.
 */
class NORVU_GUI_API Annotations : public QObject
{
    Q_OBJECT

public:
    explicit Annotations(QObject *parent = nullptr);
    /** Destroys all items; the symbols that hold them are without a label then. */
    ~Annotations() override;

    /** A new item behind all others, in the present style. */
    AnnotationItem *add(const QString &text);
    /** Lets an item go, which stays the caller's; false if it isn't one of the list. */
    bool take(const AnnotationItem *item);
    /** Takes an item out and destroys it; false if it isn't one of the list. */
    bool remove(const AnnotationItem *item);
    /** Destroys all items. */
    void clear();

    /** In order of precedence. */
    const QList<AnnotationItem *> &items() const;

    /** Style of items that are added from now on; not owned. Null for the default. Items of a style
     *  that is destroyed get the default one. */
    void setStyle(AnnotationStyle *style);
    AnnotationStyle *style() { return _style ? _style : &_defaultStyle; }

private slots:
    void replaceStyle(QObject *style);

private:
    friend struct AnnotationItem;

    void release(AnnotationItem *item);
    void closeGaps() const;

    /** With null where items have gone, so that many go in no time. */
    mutable QList<AnnotationItem *> _items;
    mutable int _gaps{0};
    AnnotationStyle _defaultStyle;
    AnnotationStyle *_style{nullptr};
};

} // namespace Gui
} // namespace Norvu
