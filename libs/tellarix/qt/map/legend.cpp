// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/layer.h>
#include <tellarix/qt/map/legend.h>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** Stores a value; true if it was another before. */
template <typename T>
bool changed(T &stored, const T &value)
{
    if (stored == value)
        return false;

    stored = value;
    return true;
}

} // namespace

Legend::Legend(QObject *parent) : QObject(parent)
{}

Legend::~Legend()
{
    if (_layer)
        _layer->takeLegend(this);
}

void Legend::bringToFront()
{
    emit bringToFrontRequested(this);
}

Legend *Legend::clone(QObject *) const
{
    return nullptr;
}

void Legend::contextResizeEvent(const QSize &)
{}

void Legend::setTitle(const QString &title)
{
    if (changed(_title, title))
        emit updateRequested();
}

void Legend::setAlignment(Qt::Alignment alignment)
{
    if (changed(_alignment, alignment))
        emit updateRequested();
}

void Legend::setSize(const QSize &size)
{
    if (changed(_size, size))
        emit updateRequested();
}

void Legend::setEnabled(bool enabled)
{
    if (changed(_enabled, enabled))
        emit updateRequested();
}

void Legend::setVisible(bool visible)
{
    if (changed(_visible, visible))
        emit updateRequested();
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
