// SPDX-License-Identifier: LGPL-3.0-or-later

#include "workbenchapplication.h"

#include "bench/bench.h"
#include "bench/darkpalette.h"
#include "bench/task.h"
#include "mainwindow.h"

#include <norvu/gui/splashscreen.h>
#include <tellarix/core/version.h>

#include <QDir>
#include <QPixmap>

#include <cstdio>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto SplashImage = ":/norvu/gui/splash.png";
constexpr auto IconFile = ":/norvu/gui/icons/norvu.svg";
constexpr QSize SnapshotSize(1600, 900);

void printError(const QString &text)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
}

} // namespace

WorkbenchApplication::WorkbenchApplication(int &argc, char **argv, int flags)
    : Norvu::Gui::Application(argc, argv, flags, Desktop, SplashImage, IconFile, "Norvu",
                              "Waveforms, spectrograms, events and maps on one desk",
                              Core::CurrentVersion.toString().c_str())
{
    setName("norvu-workbench");
    setVersion(Core::CurrentVersion.toString());
}

void WorkbenchApplication::createCommandLineDescription()
{
    Norvu::Gui::Application::createCommandLineDescription();
    commandLine().setApplicationDescription(
        tr("Shows waveforms of files, day-file archives and record streams. Without an argument it "
           "opens its built-in demonstration."));
    commandLine().addPositionalArgument("URL|FILE", tr("What to open."), "[URL|FILE...]");
    commandLine().addOption({"snapshot",
                             tr("Writes a picture of each panel to DIR and ends; works without a "
                                "display too."),
                             "DIR"});
    commandLine().addOption({"dark", tr("Starts with dark colours.")});
    commandLine().addOption(
        {"from", tr("Loads data from this time on, e.g. 2024-01-05T10:00:00."), "TIME"});
    commandLine().addOption({"to", tr("Loads data up to this time."), "TIME"});
}

bool WorkbenchApplication::validateParameters()
{
    if (!Norvu::Gui::Application::validateParameters())
        return false;
    if (isSnapshot() && commandLine().value("snapshot").isEmpty())
        return usageError(tr("--snapshot needs the name of a folder"));
    return readTime("from", &_from) && readTime("to", &_to);
}

bool WorkbenchApplication::readTime(const QString &option, Core::Time *time)
{
    if (!commandLine().isSet(option))
        return true;
    const QString text = commandLine().value(option);
    if (time->fromString(text.toStdString()))
        return true;
    return usageError(tr("--%1: \"%2\" is no time; write 2024-01-05T10:11:12").arg(option, text));
}

bool WorkbenchApplication::isSnapshot() const
{
    return commandLine().isSet("snapshot");
}

QStringList WorkbenchApplication::sources()
{
    QStringList sources = positionalArguments();
    const QString stream = QString::fromStdString(recordStreamURL());
    if (sources.isEmpty() && !stream.isEmpty())
        sources.append(stream);
    return sources;
}

bool WorkbenchApplication::run()
{
    if (commandLine().isSet("dark"))
        setDarkColors(true);

    bool opened = true; // outlives the tasks of the window
    MainWindow window;
    window.bench()->setDataWindow(Core::TimeWindow(_from, _to));
    if (isSnapshot())
        window.resize(SnapshotSize);
    else
        window.restoreSettings();
    setMainWidget(&window);
    window.show();
    if (splashScreen())
        splashScreen()->close();

    window.setInteractive(!isSnapshot());
    const Tasks *tasks = window.bench()->tasks();
    connect(tasks, &Tasks::finished, &window,
            [&opened](const Task *task) { opened = opened && task->problem().isEmpty(); });
    const QStringList wanted = sources();
    if (!(wanted.isEmpty() ? window.openDemonstration() : window.open(wanted)))
        opened = false;

    bool ok = true;
    if (isSnapshot()) {
        // Pictures show what is there once all has been read.
        while (!tasks->running().isEmpty())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        ok = writeSnapshots(window) && opened;
    } else {
        ok = Norvu::Gui::Application::run();
    }
    setMainWidget(nullptr);
    return ok;
}

bool WorkbenchApplication::writeSnapshots(MainWindow &window)
{
    const QDir folder(commandLine().value("snapshot"));
    if (!QDir().mkpath(folder.path())) {
        printError(tr("%1: the folder can't be made").arg(folder.path()));
        return false;
    }
    bool ok = true;
    for (const PanelPicture &snapshot : window.snapshots()) {
        const QString file = folder.filePath(snapshot.fileName);
        if (snapshot.picture.save(file, "PNG"))
            std::printf("%s\n", qUtf8Printable(file));
        else {
            printError(tr("%1: the picture can't be written").arg(file));
            ok = false;
        }
    }
    return ok;
}

} // namespace Workbench
