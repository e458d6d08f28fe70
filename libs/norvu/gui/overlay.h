// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QWidget>

namespace Norvu {
namespace Gui {

/** A widget that covers its parent, also when the parent's size changes or it gets another one. */
class NORVU_GUI_API Overlay : public QWidget
{
    Q_OBJECT

public:
    explicit Overlay(QWidget *parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());

    bool eventFilter(QObject *object, QEvent *event) override;

protected:
    bool event(QEvent *event) override;

private:
    void followParent();
};

} // namespace Gui
} // namespace Norvu
