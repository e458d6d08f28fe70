// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/bench.h"
#include "bench/stationfiles.h"
#include "panelset.h"

#include <QHash>
#include <QMainWindow>

class QDockWidget;
class QTabWidget;

namespace Workbench {

class MessageDock;

/** The workbench's window: lays panels out, gathers their entries, and keeps the session. */
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(const PanelRegistry &registry = panelRegistry(), QWidget *parent = nullptr);

    /** Without interaction problems go to standard error instead of the list, and nothing is asked.
     */
    void setInteractive(bool interactive) { _interactive = interactive; }

    Bench *bench() { return &_bench; }

    /**
     * Begins to open files and URLs beside what is open already; what takes longer goes on as
     * tasks, which know at their end what went wrong.
     * @return false if one of them can't be opened
     */
    bool open(const QStringList &sources);

    /** Opens what the last session was asked to open again; false if that was nothing. */
    bool openRemembered();

    /** A picture of each panel, at the size of the window. */
    QVector<PanelPicture> snapshots();

    void restoreSettings();

public slots:
    /** Begins to open the demonstration, which is written first if it isn't there. */
    bool openDemonstration();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private slots:
    void tell(const QStringList &problems);
    void showStatus(const QString &text);
    void askForFiles();
    void askForFolder();
    void askForUrl();
    void openRecent(QAction *action);
    void fillRecent();
    void closeAll();
    void askToEndJobs();

private:
    QPixmap picturePlaying();
    void createMessages();
    void createPanels(const PanelRegistry &registry);
    void addTab(Panel *panel);
    void addWindow(Panel *panel);
    void addDock(Panel *panel);
    void placeDock(QDockWidget *dock, Qt::DockWidgetArea area);
    void makeRoomInCentre(Qt::Orientation orientation);
    void createFileMenu();
    void createViewMenu();
    void createPanelMenu(QMenu *viewMenu);
    QList<QAction *> panelActions(QList<QAction *> PanelParts::*actions);
    Panel *panelFor(const QString &source) const;
    bool haveAll(const QString &failure, const std::function<bool(Panel *)> &task);
    void saveSettings() const;
    void tellWhatIsCutShort() const;
    void addRecent(const QString &source);
    void remember(const QStringList &sources) const;

    Bench _bench;
    StationFiles _stationFiles;
    PanelSet _panels;
    QTabWidget *_centre;
    QHash<Panel *, QDockWidget *> _docks;
    MessageDock *_messages;
    QMenu *_recent{nullptr};
    QAction *_dark{nullptr};
    bool _interactive{true};
    bool _hasLayoutOfUser{false}; /**< docks are as large as the user wants them */
    bool _mayEndJobs{false};      /**< the user has agreed to it */
};

} // namespace Workbench
