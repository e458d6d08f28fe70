// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QDoubleSpinBox>

class QToolButton;

namespace Norvu {
namespace Gui {

/**
 * A number input that may hold no value.
 *
 * The minimum stands for no value and is shown as "Unset"; a number equal to it can't be told from
 * it. A button at the left edge of the box returns to it.
 */
class NORVU_GUI_API OptionalDoubleSpinBox : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit OptionalDoubleSpinBox(QWidget *parent = nullptr);

    /** Whether the box holds a value. */
    bool isValid() const;

public slots:
    /** Returns to no value. */
    void resetContent();
    /** Brings the button in line with the value. */
    void changedContent();

private:
    QToolButton *_resetButton;
    int _margin;
};

} // namespace Gui
} // namespace Norvu
