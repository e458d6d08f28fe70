// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QMainWindow>
#include <QPixmap>
#include <QStringList>
#include <QVector>

class QDockWidget;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QProgressBar;

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
}
} // namespace Norvu

namespace Workbench {

class ExportActions;
class FilterBox;
class OverviewMenu;
class SpectrogramPanel;
class WaveformPanel;

/** The workbench's window: menus, panels, status line and a list of problems. */
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    struct Snapshot
    {
        QString fileName;
        QPixmap picture;
    };

    explicit MainWindow(QWidget *parent = nullptr);

    /** Without interaction problems go to standard error instead of the list and its boxes. */
    void setInteractive(bool interactive) { _interactive = interactive; }

    /** Limits what is loaded to a window; an invalid one loads everything. */
    void setTimeWindow(const Tellarix::Core::TimeWindow &window);

    /**
     * Opens files and URLs of record streams beside what is open already.
     * @return false if one of them could not be opened or gave nothing
     */
    bool open(const QStringList &sources);

    /** A picture of each panel, at the size of the window. */
    QVector<Snapshot> snapshots();

    void restoreSettings();

public slots:
    /** Opens the demonstration recordings, which are written first if they aren't there. */
    bool openDemonstration();

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private slots:
    void tell(const QStringList &problems);
    void askForFiles();
    void askForUrl();
    void closeAll();
    void showMeasurement(const QString &text);
    void setFilter(const QString &text);
    void showProblem(const QString &message);
    void showFilteringProgress(int done, int total);

private:
    void createFileMenu();
    void addExports(QMenu *menu);
    void createViewMenu();
    QAction *addToggle(QMenu *menu, const QString &text, const QString &shortcut, const char *slot);
    void createFilterBar();
    void createTraceMenu();
    void createOverviewMenu();
    void createSpectrogramMenu();
    void createMessageDock();
    void createStatusBar();
    void saveSettings() const;
    QPixmap overviewPicture(bool horizontal);
    QPixmap spectrogramPicture();
    QPixmap gradientEditorPicture();

    WaveformPanel *_waveforms;
    ExportActions *_exports{nullptr};
    FilterBox *_filterBox{nullptr};
    OverviewMenu *_overviewMenu{nullptr};
    Norvu::Gui::MultiTraceWidget *_overview{nullptr};
    QDockWidget *_spectrogramDock{nullptr};
    SpectrogramPanel *_spectrogramPanel{nullptr};
    QDockWidget *_messageDock{nullptr};
    QPlainTextEdit *_messages{nullptr};
    QLabel *_pointerLabel{nullptr};
    QLabel *_measurementLabel{nullptr};
    QLabel *_rangeLabel{nullptr};
    QProgressBar *_progressBar{nullptr};
    bool _interactive{true};
};

} // namespace Workbench
