// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/eventfilter.h>

#include "ui_eventfilterwidget.h"

#include <QWidget>

namespace Norvu {
namespace Gui {

/** Edits the bounds of an event filter, each of which can be left unset. */
class NORVU_GUI_API EventFilterWidget : public QWidget
{
    Q_OBJECT

public:
    explicit EventFilterWidget(QWidget *parent = nullptr);
    ~EventFilterWidget() override;

    /** The bounds as they stand in the form; an input at its minimum is unset. */
    EventFilter filter() const;

    /** @name Reserved
     *  They accept nothing yet, and nothing calls them.
     *  @{ */
    bool checkLatitude(double latitude) const;
    bool checkLongitude(double longitude) const;
    bool checkDepth(double depth) const;
    bool checkMagnitude(double magnitude) const;
    /** @} */

private:
    Ui_EventFilterWidget _ui;
};

} // namespace Gui
} // namespace Norvu
