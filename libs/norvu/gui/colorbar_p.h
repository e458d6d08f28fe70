// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QColor>
#include <QWidget>

namespace Norvu {
namespace Gui {

/** The status bar of a row: a stripe of colour with room on both sides. */
class ColorBar : public QWidget
{
    Q_OBJECT

public:
    ColorBar(const QColor &color, QWidget *parent) : QWidget(parent), _color(color) {}

    const QColor &color() const { return _color; }
    void setColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor _color;
};

} // namespace Gui
} // namespace Norvu
