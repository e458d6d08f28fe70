// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panelregistry.h"

namespace Workbench {

/** The panels of new windows. Plug-ins add theirs before a window is made. */
Q_DECL_EXPORT PanelRegistry &panelRegistry();

/** Offers a class of panels for as long as it lives: a member of a plug-in. */
template <typename T>
class PanelOffer
{
public:
    PanelOffer() : _number(panelRegistry().add<T>()) {}
    ~PanelOffer() { panelRegistry().remove(_number); }
    PanelOffer(const PanelOffer &) = delete;
    PanelOffer &operator=(const PanelOffer &) = delete;

private:
    int _number;
};

} // namespace Workbench
