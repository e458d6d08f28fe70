// SPDX-License-Identifier: LGPL-3.0-or-later

// The smallest host of the library: one window with the traces of the files given.
//
//   minimal-host [--once] FILE...
//
// --once ends the program as soon as the window was shown.

#include <norvu/gui/application.h>
#include <norvu/gui/tracefileloader.h>
#include <norvu/gui/traceview.h>

#include <QMainWindow>
#include <QTimer>

namespace {

class Host : public Norvu::Gui::Application
{
public:
    Host(int &argc, char **argv)
        : Norvu::Gui::Application(argc, argv, 0, Tellarix::Gui::Application::Desktop, nullptr,
                                  nullptr, "Minimal host", "An example", "1.0")
    {}

    bool run() override
    {
        QMainWindow window;
        auto *view = new Norvu::Gui::TraceView(&window, Qt::WindowFlags(), nullptr, false);
        window.setCentralWidget(view);
        window.resize(1000, 600);
        setMainWidget(&window);

        for (const QString &file : positionalArguments()) {
            Norvu::Gui::TraceFileLoader loader(file.toStdString(), nullptr);
            loader.load(view, Tellarix::Core::TimeWindow());
        }
        view->updateView();

        if (commandLine().isSet("once"))
            QTimer::singleShot(0, &window, &QWidget::close);
        const bool ok = Norvu::Gui::Application::run();
        setMainWidget(nullptr);
        return ok;
    }

protected:
    void createCommandLineDescription() override
    {
        Norvu::Gui::Application::createCommandLineDescription();
        commandLine().addOption({"once", "Ends as soon as the window was shown."});
        commandLine().addPositionalArgument("FILE", "Waveform files to show.", "[FILE...]");
    }
};

} // namespace

int main(int argc, char **argv)
{
    Host host(argc, argv);
    return host();
}
