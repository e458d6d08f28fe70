// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QToolButton>

namespace Norvu {
namespace Gui {

/**
 * A tool button for highlighted backgrounds: its text has the colour of highlighted text, and the
 * usual one of buttons while the mouse is over it or it is down.
 */
class NORVU_GUI_API ToolButton : public QToolButton
{
    Q_OBJECT

public:
    explicit ToolButton(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace Gui
} // namespace Norvu
