// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QMenu>

class QButtonGroup;

namespace Norvu {
namespace Gui {

/**
 * A drop-down that holds a layout of buttons in place of actions, and is sized by that layout.
 *
 * The tab key goes from one button to the next.
 */
class NORVU_GUI_API Menu : public QMenu
{
    Q_OBJECT

public:
    explicit Menu(QWidget *parent = nullptr);

    /** Group for the buttons that the menu holds; owned by the menu. */
    QButtonGroup *buttonGroup() const { return _buttonGroup; }

    QSize sizeHint() const override;

protected:
    bool focusNextPrevChild(bool next) override;

private:
    QButtonGroup *_buttonGroup;
};

} // namespace Gui
} // namespace Norvu
