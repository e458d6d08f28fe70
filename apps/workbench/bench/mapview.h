// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "region.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>

class QPainter;

namespace Workbench {

/** The map, as far as more than one panel has to do with it. */
class MapView : public QObject
{
    Q_OBJECT

public:
    using Painting = std::function<void(QPainter &, const QSize &)>;

    explicit MapView(QObject *parent = nullptr);

    /** Shows the map, and tracks the mouse; null unless a panel shows one, which is made before
     *  others. */
    QWidget *widget() const { return _widget; }
    /** @param painting  paints the map at a size in pixels, as long as the widget is there */
    void setMap(QWidget *widget, const Painting &painting);
    /** Paints the map as it is shown, at any size; nothing without a map. */
    void paint(QPainter &painter, const QSize &size) const;

    /** What the map shows; unset without a map. */
    const std::optional<Region> &region() const { return _region; }
    void setRegion(const std::optional<Region> &region);

    /** Pixels at its lower edge over which something else lies. */
    void setCoveredHeight(int height);
    int coveredHeight() const { return _coveredHeight; }

signals:
    /** There is another map, or none any more. */
    void changed();
    void coveredHeightChanged(int height);
    void regionChanged();

private slots:
    void forget();

private:
    QPointer<QWidget> _widget;
    Painting _painting;
    int _coveredHeight{0};
    std::optional<Region> _region;
};

} // namespace Workbench
