// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/records/recordlabel.h>

namespace Norvu {
namespace Gui {

/**
 * A label that spreads its items over rows which fill its height.
 *
 * Items 0 and 1 share a row, items 2 and 3 the next, every later item has one of its own. Items
 * without text take no room: without item 1, item 2 stands beside item 0. Letters get smaller when
 * the rows would not fit.
 */
class NORVU_GUI_API TraceLabel : public Tellarix::Gui::StandardRecordLabel
{
    Q_OBJECT

public:
    explicit TraceLabel(int items = 3, QWidget *parent = nullptr, const char *name = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool hasText(int index) const;
    int rowCount() const;
};

} // namespace Gui
} // namespace Norvu
