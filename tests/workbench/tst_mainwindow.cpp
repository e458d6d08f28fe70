// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/jobs.h"
#include "mainwindow.h"
#include "workbenchapplication.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QStatusBar>
#include <QtTest>

#include <stdexcept>

using namespace Workbench;

namespace {

/** What panels were asked for, in order. */
QStringList calls;

/** A panel that opens files of its own suffix. */
class SomePanel : public Panel
{
public:
    SomePanel(Bench *bench, const PanelDescription &description) : Panel(bench, description) {}
    ~SomePanel() override { calls << description().name + " goes"; }

    QList<QAction *> menuActions(Menu menu) const override
    {
        auto *action = new QAction(description().name, const_cast<SomePanel *>(this));
        return menu == Menu::File ? QList<QAction *>{action} : QList<QAction *>();
    }
    void saveState(QSettings &settings) const override
    {
        settings.setValue(description().name, state);
    }
    void restoreState(QSettings &settings) override
    {
        state = settings.value(description().name).toString();
    }
    QVector<PanelPicture> pictures() override
    {
        calls << description().name + (isVisible() ? " is seen" : " is hidden");
        return Panel::pictures();
    }
    bool canOpen(const QString &source) const override
    {
        return description().name == "centre" || source.endsWith('.' + description().name);
    }
    bool openSources(const QStringList &sources) override
    {
        calls << description().name + " opens " + sources.join('+');
        return false;
    }

    QString state;
};

/** A panel of a plug-in that throws whenever it is asked for anything, or from its menus on. */
class FaultyPanel : public Panel
{
public:
    FaultyPanel(Bench *bench, bool isComplete)
        : Panel(bench, {"faulty", "Faulty"}), _isComplete(isComplete)
    {}

    QList<QMenu *> menus() const override { return _isComplete ? Panel::menus() : fault(); }
    void fillStatusBar(QStatusBar *) override { fault(); }
    void saveState(QSettings &) const override { fault(); }
    void restoreState(QSettings &) override { throw 1; }
    QVector<PanelPicture> pictures() override { return fault(), QVector<PanelPicture>(); }
    bool canOpen(const QString &source) const override
    {
        return source == "c" || !fault().isEmpty();
    }
    bool openSources(const QStringList &) override { return !fault().isEmpty(); }
    bool openDemonstration(const QString &) override { return !fault().isEmpty(); }
    void closeAll() override { fault(); }

private:
    [[noreturn]] static QList<QMenu *> fault() { throw std::runtime_error("no luck"); }

    bool _isComplete;
};

PanelRegistry registry()
{
    PanelRegistry registry;
    for (const PanelDescription &description : std::initializer_list<PanelDescription>{
             {"centre", "Centre", {}, {}, {}, PanelPlace::Centre},
             {"map", "Map", "&Map", {"Ctrl+Shift+M"}, {}, PanelPlace::Centre},
             {"left", "Left", {}, {"Ctrl+1"}, {}, PanelPlace::Left, true},
             {"lower", "Lower", {}, {"Ctrl+2"}, {}, PanelPlace::Bottom}})
        registry.add([description](Bench *bench) { return new SomePanel(bench, description); });
    return registry;
}

SomePanel *panel(const MainWindow &window, const char *name)
{
    return static_cast<SomePanel *>(window.findChild<Panel *>(name));
}

QStringList texts(const MainWindow &window, const QString &title)
{
    QStringList texts;
    for (const QMenu *menu : window.findChildren<QMenu *>()) {
        if (menu->title() != title)
            continue;
        for (const QAction *action : menu->actions())
            texts << action->text();
    }
    return texts;
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { _opened = url; }

private slots:
    void initTestCase();
    void init() { calls.clear(); }
    void gathersEntries();
    void keysShowPanels();
    void leavesHalfToTheCentre();
    void leadsSourcesToTheirPanel();
    void tellsProblemsAndStatus();
    void outlivesPanelsThatThrow();
    void showsPanelsForTheirPictures();
    void asksBeforeItEndsJobs();
    void keepsSession();
    void opensTheGuide();

private:
    QUrl _opened;
    QTemporaryDir _folder;
};

void TestMainWindow::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, _folder.path());
}

void TestMainWindow::gathersEntries()
{
    {
        MainWindow window(registry());
        const QStringList file = texts(window, "&File");
        QCOMPARE(file.mid(5, 9),
                 QStringList({"", "centre", "", "map", "", "left", "", "lower", ""}));
        QCOMPARE(texts(window, "Pan&els"), QStringList({"Centre", "&Map", "Left", "Lower"}));
    }
    // Panels that were made first stay until those are gone that may use them.
    QCOMPARE(calls, QStringList({"lower goes", "left goes", "map goes", "centre goes"}));
}

void TestMainWindow::keysShowPanels()
{
    MainWindow window(registry());
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QVERIFY(panel(window, "left")->isVisible() && panel(window, "centre")->isVisible());
    QVERIFY(!panel(window, "lower")->isVisible() && !panel(window, "map")->isVisible());

    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(&window, key, modifiers);
        QCoreApplication::processEvents();
    };
    press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(panel(window, "map")->isVisible() && !panel(window, "centre")->isVisible());
    press(Qt::Key_1, Qt::ControlModifier);
    QVERIFY(!panel(window, "left")->isVisible());
    window.findChild<QDockWidget *>("left")->show();
    QVERIFY(panel(window, "left")->toggleAction()->isChecked());

    // It lies above the list of problems, and not behind.
    window.bench()->tell({"something"});
    press(Qt::Key_2, Qt::ControlModifier);
    QTRY_VERIFY(!panel(window, "lower")->visibleRegion().isEmpty());
}

void TestMainWindow::leavesHalfToTheCentre()
{
    MainWindow window(registry());
    window.resize(1200, 800);
    window.show();
    auto *left = window.findChild<QDockWidget *>("left");
    auto *lower = window.findChild<QDockWidget *>("lower");
    lower->show();
    QCoreApplication::processEvents();
    // Docks are as large as the user wants them, until the window has less room.
    window.resizeDocks({left}, {900}, Qt::Horizontal);
    window.resizeDocks({lower}, {600}, Qt::Vertical);
    QTRY_VERIFY(left->width() > 850 && lower->height() > 550);
    window.resize(1000, 700);
    const QWidget *centre = window.centralWidget();
    QTRY_VERIFY(centre->width() >= 490 && centre->height() >= 340);
    QVERIFY(left->width() > 400 && lower->height() > 200);
}

void TestMainWindow::leadsSourcesToTheirPanel()
{
    MainWindow window(registry());
    QVERIFY(!window.open({"a.mseed", "b.left", "c.sac", "d.map"}));
    QCOMPARE(calls,
             QStringList({"centre opens a.mseed+c.sac", "map opens d.map", "left opens b.left"}));
}

void TestMainWindow::tellsProblemsAndStatus()
{
    PanelRegistry panels = registry();
    const auto named = [](const char *name) -> PanelRegistry::Maker {
        return [=](Bench *bench) { return new SomePanel(bench, {name, "Other"}); };
    };
    const std::pair<PanelRegistry::Maker, const char *> rows[] = {
        {[](Bench *) -> Panel * { throw std::runtime_error("no luck"); }, "left out:.*no luck"},
        {named("map"), "left out: \"map\""},
        {named("messages"), "left out: \"messages\""},
        {named(""), "left out: \"\""},
        {[](Bench *bench) { return new FaultyPanel(bench, false); }, "left out: .*menus.*no luck"},
    };
    for (const auto &[maker, message] : rows) {
        const int broken = panels.add(maker);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(message));
        QVERIFY(!MainWindow(panels).findChild<QDockWidget *>("messages")->isHidden());
        panels.remove(broken);
    }

    MainWindow window(panels);
    window.show();
    auto *messages = window.findChild<QDockWidget *>("messages");
    QVERIFY(!messages->isVisible());
    window.bench()->tell({});
    QVERIFY(!messages->isVisible());
    window.bench()->tell({"a.mseed: no waveforms in it"});
    QVERIFY(messages->isVisible());
    window.bench()->showStatus("Done");
    QCOMPARE(window.statusBar()->currentMessage(), QString("Done"));
}

void TestMainWindow::outlivesPanelsThatThrow()
{
    PanelRegistry panels = registry();
    panels.add([](Bench *bench) { return new FaultyPanel(bench, true); });
    QStringList problems;
    const auto told = [&](const char *part, const std::function<void(MainWindow &)> &step,
                          MainWindow &window) {
        problems.clear();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(part));
        step(window);
        return problems.size() == 1 && problems.first().contains(QRegularExpression(part));
    };
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("\"Faulty\".*status bar: no luck"));
    MainWindow window(panels);
    connect(window.bench(), &Bench::problemsTold, this,
            [&](const QStringList &texts) { problems += texts; });
    QVERIFY(told(
        "\"Faulty\".*restore", [](auto &w) { w.restoreSettings(); }, window));
    window.show();
    QVERIFY(told(
        "whether a.map", [](auto &w) { w.open({"a.map"}); }, window));
    QVERIFY(told(
        "open its sources: no luck", [](auto &w) { w.open({"c"}); }, window));
    QVERIFY(told(
        "pictures", [](auto &w) { QCOMPARE(w.snapshots().size(), 6); }, window));
    QVERIFY(told(
        "session: no luck", [](auto &w) { w.close(); }, window));
}

void TestMainWindow::showsPanelsForTheirPictures()
{
    MainWindow window(registry());
    window.setInteractive(false);
    window.show();
    QStringList files;
    for (const PanelPicture &picture : window.snapshots())
        files << picture.fileName;
    QCOMPARE(files, QStringList({"centre.png", "map.png", "left.png", "lower.png", "workbench.png",
                                 "widgets.png"}));
    QCOMPARE(calls,
             QStringList({"centre is seen", "map is seen", "left is seen", "lower is seen"}));
    QVERIFY(panel(window, "left")->isVisible() && !panel(window, "lower")->isVisible());
}

void TestMainWindow::asksBeforeItEndsJobs()
{
    MainWindow window(registry());
    window.show();
    for (int i = 0; i < 3; ++i)
        window.bench()->jobs()->add({}, "sleep 60");
    window.bench()->jobs()->setConcurrencyLevel(2);
    for (const auto button : {QMessageBox::No, QMessageBox::Yes}) {
        QVERIFY(window.isVisible());
        bool isAsked = false;
        QTimer answer;
        answer.start(10);
        connect(&answer, &QTimer::timeout, [&] {
            const auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            isAsked = box->text() == "2 jobs are running, and one waits: stop them and quit?";
            box->button(button)->click();
        });
        window.close();
        QTRY_VERIFY(isAsked);
    }
    QTRY_VERIFY(!window.isVisible());
}

void TestMainWindow::keepsSession()
{
    {
        MainWindow window(registry());
        window.show();
        panel(window, "left")->state = "something";
        panel(window, "left")->toggleAction()->trigger();
        panel(window, "lower")->toggleAction()->trigger();
        panel(window, "map")->toggleAction()->trigger();
        window.close();
    }
    MainWindow window(registry());
    window.restoreSettings();
    window.show();
    QCOMPARE(panel(window, "left")->state, QString("something"));
    for (const char *name : {"lower", "map"})
        QVERIFY2(panel(window, name)->isVisible(), name);
    QVERIFY(!panel(window, "left")->isVisible());
    QVERIFY(!panel(window, "left")->toggleAction()->isChecked());
    QVERIFY(panel(window, "lower")->toggleAction()->isChecked());
}

void TestMainWindow::opensTheGuide()
{
    char name[] = "norvu-workbench";
    char *arguments[] = {name, nullptr};
    int count = 1;
    WorkbenchApplication application(count, arguments, 0);
    QMainWindow window;
    auto *menu = window.menuBar()->addMenu("&Help");
    menu->setObjectName("menuHelp");
    application.setMainWidget(&window);
    QDesktopServices::setUrlHandler("file", this, "openUrl");
    menu->actions().first()->trigger();
    QDesktopServices::unsetUrlHandler("file");
    application.setMainWidget(nullptr);

    QCOMPARE(_opened, QUrl("file://" + application.docUrl()));
    QFile page(_opened.toLocalFile());
    QVERIFY2(page.open(QIODevice::ReadOnly), qPrintable(page.fileName()));
    QVERIFY(page.readAll().contains("Working with the workbench"));
    QVERIFY(QFile::exists(QFileInfo(page).dir().filePath("images/waveforms.png")));
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
