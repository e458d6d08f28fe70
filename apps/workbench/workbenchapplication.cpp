// SPDX-License-Identifier: LGPL-3.0-or-later

#include "workbenchapplication.h"

#include "bench/bench.h"
#include "bench/darkpalette.h"
#include "bench/task.h"
#include "mainwindow.h"

#include <norvu/gui/splashscreen.h>
#include <tellarix/core/version.h>

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QEventLoop>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPixmap>
#include <QTimer>

#include <cstdio>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto SplashImage = ":/norvu/gui/splash.png";
constexpr auto IconFile = ":/norvu/gui/icons/norvu.svg";
constexpr auto HelpMenu = "menuHelp";
constexpr QSize SnapshotSize(1600, 900);

void printError(const QString &text)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
}

/** Nobody answers message boxes while pictures are made: what they say goes to standard error. */
class BoxReader : public QObject
{
public:
    BoxReader() { qApp->installEventFilter(this); }

    bool hasRead() const { return _hasRead; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *box = event->type() == QEvent::Show ? qobject_cast<QMessageBox *>(watched) : nullptr;
        if (box) {
            printError(box->text());
            _hasRead = true;
            QMetaObject::invokeMethod(box, "reject", Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool _hasRead{false};
};

/** Waits until nothing goes on in the background. */
class TaskWaiter : public QObject
{
public:
    explicit TaskWaiter(Tasks *tasks) : _tasks(tasks)
    {
        connect(tasks, &Tasks::finished, this, [this](const Task *task) {
            _hasFailed = _hasFailed || !task->problem().isEmpty();
            _loop.quit();
        });
    }

    /** @return whether all has gone well since this was made */
    bool wait()
    {
        // The end of one may be the beginning of another.
        QCoreApplication::processEvents();
        while (!_tasks->running().isEmpty()) {
            _loop.exec();
            QCoreApplication::processEvents();
        }
        return !_hasFailed;
    }

private:
    Tasks *_tasks;
    QEventLoop _loop;
    bool _hasFailed{false};
};

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

bool WorkbenchApplication::open(MainWindow &window)
{
    QStringList sources = positionalArguments();
    const QString stream = QString::fromStdString(recordStreamURL());
    if (sources.isEmpty() && !stream.isEmpty())
        sources.append(stream);
    if (!sources.isEmpty())
        return window.open(sources);
    return (!isSnapshot() && window.openRemembered()) || window.openDemonstration();
}

bool WorkbenchApplication::openAndWait(MainWindow &window)
{
    const BoxReader boxes;
    TaskWaiter tasks(window.bench()->tasks());
    const bool canOpen = open(window);
    const bool ok = tasks.wait() && canOpen;
    return ok && !boxes.hasRead();
}

bool WorkbenchApplication::run()
{
    if (commandLine().isSet("dark"))
        setDarkColors(true);

    MainWindow window;
    window.bench()->setDataWindow(Core::TimeWindow(_from, _to));
    window.setInteractive(!isSnapshot());
    if (isSnapshot())
        window.resize(SnapshotSize);
    else
        window.restoreSettings();
    setMainWidget(&window);
    window.show();
    if (splashScreen())
        splashScreen()->close();

    bool ok = true;
    if (isSnapshot()) {
        ok = openAndWait(window);
        ok = writeSnapshots(window) && ok;
    } else {
        window.bench()->tell(plugins().problems());
        // Once the program can be ended: whoever quits meanwhile means it.
        QTimer::singleShot(0, &window, [this, &window] { open(window); });
        ok = Norvu::Gui::Application::run();
    }
    setMainWidget(nullptr);
    return ok;
}

void WorkbenchApplication::setMainWidget(QWidget *widget)
{
    auto *window = qobject_cast<QMainWindow *>(widget);
    if (auto *menu = window ? window->menuBar()->findChild<QMenu *>(HelpMenu) : nullptr)
        connect(menu->addAction(tr("&Guide")), SIGNAL(triggered(bool)), this, SLOT(showAppHelp()));
    Norvu::Gui::Application::setMainWidget(widget);
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
