// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include "ui_aboutnorvuwidget.h"

#include <QDialog>
#include <QString>

namespace Norvu {
namespace Gui {

/** Says what an application is, which version of it and of the framework runs, and who made it. */
class NORVU_GUI_API AboutWidget : public QDialog
{
    Q_OBJECT

public:
    explicit AboutWidget(QWidget *parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~AboutWidget() override;

    void setVersion(const QString &version);
    void setFrameworkVersion(const QString &version);

public slots:
    /** Shows the dialog with this tab in front; 0 and tabs that don't exist change no tab. */
    void show(int tabIndex);
    void show();
    void done(int r) override;

private:
    void updateMailLink();

    Ui_AboutNorvuWidget _ui;
};

} // namespace Gui
} // namespace Norvu
