// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventlistcolumns.h>

#include <QtGlobal>

#include <array>

namespace Norvu {
namespace Gui {

namespace {

constexpr std::array<const char *, EEventListColumnsNames::Count> Names{
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "OT(GMT)"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "M"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "TP"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "Phases"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "Lat"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "Lon"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "Depth (km)"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "Stat"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "FM"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "ID"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "Type"),
    QT_TRANSLATE_NOOP("Norvu::Gui::EventListView", "Region"),
};

} // namespace

const char *EEventListColumnsNames::name(int column)
{
    return column >= 0 && column < Count ? Names[static_cast<size_t>(column)] : "";
}

} // namespace Gui
} // namespace Norvu
