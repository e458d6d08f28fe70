// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/application.h>

#include <tellarix/core/time.h>

#include <QStringList>

namespace Workbench {

class MainWindow;

/** The workbench's application object: its command line, and what a start shows. */
class WorkbenchApplication : public Norvu::Gui::Application
{
    Q_OBJECT

public:
    /** @param flags  bit 0 shows the splash */
    WorkbenchApplication(int &argc, char **argv, int flags);

    bool run() override;
    /** Takes the main widget; the Help menu of a main window also opens the guide. */
    void setMainWidget(QWidget *widget) override;

protected:
    void createCommandLineDescription() override;
    bool validateParameters() override;

private:
    bool open(MainWindow &window);
    bool openAndWait(MainWindow &window);
    bool isSnapshot() const;
    bool readTime(const QString &option, Tellarix::Core::Time *time);
    bool writeSnapshots(MainWindow &window);

    Tellarix::Core::Time _from;
    Tellarix::Core::Time _to;
};

} // namespace Workbench
