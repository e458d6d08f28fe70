// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panel.h"
#include "bench/taskthreads.h"
#include "listingstore.h"
#include "sourcelist.h"
#include "sourcevisit.h"

#include <QPointer>
#include <QTimer>

#include <memory>
#include <vector>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QPushButton;
class QToolButton;
class QTreeView;

namespace Workbench {

class StationTree;
class TimeChooser;

/**
 * Chooses streams of a named source and a time, and opens them.
 *
 * Servers are asked only when the user wants it, in the background; what is wrong with them is told
 * here. Hiding the panel ends that at once. Stations that are shown here are known to the bench, so
 * that maps have them, until something was opened: then only those are that were chosen.
 */
class SourcePanel : public Panel
{
    Q_OBJECT

public:
    explicit SourcePanel(Bench *bench);
    ~SourcePanel() override;

    SourceList *sources() { return &_sources; }
    StationTree *tree() const { return _tree; }
    TimeChooser *times() const { return _times; }
    const DataSource &source() const { return _source; }
    bool isBusy() const { return _task != nullptr; }
    /** What the line at the bottom says: of errors, progress and tests. */
    QString statusText() const;

    /** Shows what was listed of a source before, if anything was. */
    void setSource(const DataSource &source);
    /** What open() would open. */
    QString request() const;

    QList<QAction *> menuActions(Menu menu) const override;
    void saveState(QSettings &settings) const override;
    void restoreState(QSettings &settings) override;
    QVector<PanelPicture> pictures() override;
    void closeAll() override;

public slots:
    /** Asks the source for its stations. */
    void list();
    /** Asks every service of the source for a sign of life. */
    void test();
    /** Ends what a server was asked for. */
    void cancel();
    void open();
    /** Asks which events of a source are wanted, and has them fetched. */
    void askForEvents();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void fillSources();
    void chooseSource(int index);
    void addSource();
    void editSource();
    void removeSource();
    void hideSource();
    void showHidden(bool show);
    void updateFilter();
    void updateChoice();
    void updateButtons();
    void markBox(const QModelIndex &index, bool on);
    void markSelected();
    void followEvent();
    void followStations();
    void followRegion();
    void chooseStations();
    void updatePlaces();
    void showProgress();
    void endTask();

private:
    using Findings = std::shared_ptr<SourceVisit::Findings>;

    enum class Tone
    {
        Plain,
        Good,
        Bad
    };

    void createSourceRow(QGridLayout *layout);
    void createSourceMenu(QToolButton *button);
    void createFilterRow(QGridLayout *layout);
    void createTree(QGridLayout *layout);
    void createChoiceRow(QGridLayout *layout);
    void createLowerRows(QGridLayout *layout);
    void begin(const QString &name, const TaskThreads::Work &work,
               const std::shared_ptr<SourceVisit> &visit);
    void takeListing(const DataSource &source, const Findings &findings);
    void takeAnswers(const std::vector<SourceVisit::Answer> &answers);
    void showListing(const ListingStore::ListingPtr &listing);
    void updateHint();
    void openNetworks();
    void showStatus(const QString &text, Tone tone = Tone::Plain);
    void tellOf(bool ok, const QString &error);
    QString listingText() const;
    void showExample();

    SourceList _sources;
    ListingStore _store;
    DataSource _source;
    StationTree *_tree;
    TimeChooser *_times;
    QComboBox *_sourceBox;
    QLabel *_hosts;
    QAction *_editAction{nullptr};
    QAction *_removeAction{nullptr};
    QAction *_hideAction{nullptr};
    QAction *_showHiddenAction{nullptr};
    QAction *_eventsAction{nullptr}; /**< stands in the window's menu */
    QPushButton *_listButton;
    QPushButton *_testButton;
    QPushButton *_eventsButton;
    QLineEdit *_search;
    QLineEdit *_channels;
    QCheckBox *_vertical;
    QCheckBox *_onMap;
    QTreeView *_view;
    QLabel *_hint; /**< in the place of the tree while there is nothing */
    QLabel *_count;
    QPushButton *_allButton;
    QPushButton *_selectedButton;
    QPushButton *_noneButton;
    QLabel *_statusIcon;
    QLabel *_status;
    QProgressBar *_progress;
    QPushButton *_cancelButton;
    QCheckBox *_cached;
    QPushButton *_openButton;

    QPointer<Task> _task;
    std::shared_ptr<SourceVisit> _visit; /**< null unless a server is being asked */
    QTimer _progressTimer;
    QTimer _placesTimer;
    int _streamCount{0}; /**< of those that are chosen */
    bool _isSelecting{false};
    TaskThreads _threads; /**< goes first */
};

} // namespace Workbench
