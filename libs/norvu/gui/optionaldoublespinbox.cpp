// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/optionaldoublespinbox.h>

#include <norvu/gui/boxbutton_p.h>
#include <norvu/gui/fontawesome5.h>

#include <QFontMetrics>
#include <QToolButton>

namespace Norvu {
namespace Gui {

OptionalDoubleSpinBox::OptionalDoubleSpinBox(QWidget *parent) : QDoubleSpinBox(parent)
{
    setSpecialValueText(tr("Unset"));
    const int blank = fontMetrics().boundingRect(QLatin1Char(' ')).width();
    const auto reset = BoxButton::addTo(this, QStringLiteral("QDoubleSpinBox"),
                                        QStringLiteral("reset"), FontAwesome5::fontSolid(), blank);
    _resetButton = reset.button;
    _margin = reset.margin;

    connect(this, SIGNAL(valueChanged(double)), this, SLOT(changedContent()));
    connect(_resetButton, SIGNAL(clicked()), this, SLOT(resetContent()));
    changedContent();
}

bool OptionalDoubleSpinBox::isValid() const
{
    return value() != minimum();
}

void OptionalDoubleSpinBox::resetContent()
{
    setValue(minimum());
}

void OptionalDoubleSpinBox::changedContent()
{
    _resetButton->setEnabled(isValid());
    _resetButton->setToolTip(isValid() ? tr("Unset value") : tr("Value is unset"));
    BoxButton{_resetButton, _margin}.setGlyph(FontAwesome5::chTimes);
}

} // namespace Gui
} // namespace Norvu
