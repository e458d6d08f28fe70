#include <norvu/gui/customwidgetmenu.h>

namespace Norvu {
namespace Gui {

CustomWidgetMenu::CustomWidgetMenu(QWidget *parent) : QMenu(parent)
{}

QSize CustomWidgetMenu::sizeHint() const
{
    return QWidget::sizeHint();
}

} // namespace Gui
} // namespace Norvu
