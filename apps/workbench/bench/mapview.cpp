// SPDX-License-Identifier: LGPL-3.0-or-later

#include "mapview.h"

namespace Workbench {

MapView::MapView(QObject *parent) : QObject(parent)
{}

void MapView::setMap(QWidget *widget, const Painting &painting)
{
    if (_widget)
        disconnect(_widget, nullptr, this, nullptr);
    _widget = widget;
    _painting = painting;
    if (_widget)
        connect(_widget, SIGNAL(destroyed()), this, SLOT(forget()));
    emit changed();
}

void MapView::paint(QPainter &painter, const QSize &size) const
{
    if (_widget && _painting)
        _painting(painter, size);
}

void MapView::setCoveredHeight(int height)
{
    if (height == _coveredHeight)
        return;
    _coveredHeight = height;
    emit coveredHeightChanged(height);
}

void MapView::setRegion(const std::optional<Region> &region)
{
    if (region == _region)
        return;
    _region = region;
    emit regionChanged();
}

void MapView::forget()
{
    setRegion(std::nullopt);
    setMap(nullptr, nullptr);
}

} // namespace Workbench
