// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QDialog>

namespace Norvu {
namespace Gui {

/** A dialog around one widget, with the buttons "OK" and "Cancel" below it. */
class NORVU_GUI_API SimpleDialog : public QDialog
{
    Q_OBJECT

public:
    /** @param content  shown in the dialog, which takes it over */
    explicit SimpleDialog(QWidget *content, QWidget *parent = nullptr,
                          Qt::WindowFlags flags = Qt::WindowFlags());
};

} // namespace Gui
} // namespace Norvu
