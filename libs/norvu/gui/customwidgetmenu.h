#pragma once

#include <norvu/api.h>

#include <QMenu>

namespace Norvu {
namespace Gui {

/** A drop-down for any widgets: its size is that of its layout, whatever actions it has. */
class NORVU_GUI_API CustomWidgetMenu : public QMenu
{
    Q_OBJECT

public:
    explicit CustomWidgetMenu(QWidget *parent = nullptr);

    QSize sizeHint() const override;
};

} // namespace Gui
} // namespace Norvu
