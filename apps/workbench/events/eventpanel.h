// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panel.h"
#include "bench/taskthreads.h"
#include "catalogue.h"

#include <QPointer>

#include <memory>

class QAbstractItemModel;
class QLabel;
class QTemporaryDir;
class QTreeView;

namespace Norvu {
namespace Gui {
class EventListView;
class ExportFileDialog;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

struct ListedEvents;

/** The event list of a database. The chosen event is that of all panels. */
class EventPanel : public Panel
{
    Q_OBJECT

public:
    explicit EventPanel(Bench *bench);
    ~EventPanel() override;

    Catalogue *catalogue() const { return _catalogue; }
    /** The list of the database that is open; null if none is. */
    Norvu::Gui::EventListView *list() const { return _list; }
    /** Why the list is empty; nothing if it isn't. */
    QString emptyReason() const;

    QList<QAction *> menuActions(Menu menu) const override;
    void saveState(QSettings &settings) const override;
    void restoreState(QSettings &settings) override;
    QVector<PanelPicture> pictures() override;
    QStringList fileFilters() const override;
    bool canOpen(const QString &source) const override;
    bool openSources(const QStringList &sources) override;
    bool openDemonstration(const QString &folder) override;
    void closeAll() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void openDatabase();
    void makeDatabase();
    void importFiles();
    void exportList(QAbstractItemModel *model);
    void exportShown();
    void endExport(int result);
    void runScript();
    void showDatabase();
    void showAll();
    void reload();
    void shareRows();
    void followRegion();
    void tellRows();
    void tellNothing();
    void choose();
    void followSelection();
    void updateActions();

private:
    QAction *addAction(const QString &text, const char *slot);
    void createActions();
    void makeList();
    void askForDatabase(Catalogue::Schema schema);
    void showTitle();
    void remember(const QString &address);
    void askWhyEmpty();
    bool writeBehindDialog(const ListedEvents &events, const QString &file);
    TaskThreads::Work writing(const ListedEvents &events, const QString &file,
                              const std::function<void()> &done);
    QTreeView *tree() const;

    Catalogue *_catalogue;
    Norvu::Gui::EventListView *_list{nullptr};
    QLabel *_title;
    QLabel *_count;
    QLabel *_reason;
    QList<QAction *> _actions;
    QAction *_importAction{nullptr};
    QAction *_exportAction{nullptr};
    QAction *_scriptAction{nullptr};
    QAction *_showAllAction{nullptr};
    QStringList _recent;
    bool _isLimiting{false}; /**< the list is not loaded anew */
    QByteArray _headerState;
    QString _exportFile;
    QString _exportScript;
    std::unique_ptr<QTemporaryDir> _scriptFiles; /**< what scripts are run on */
    int _scriptCount{0};
    std::unique_ptr<Norvu::Gui::ExportFileDialog> _exportDialog;
    QPointer<Task> _exporting;
    QPointer<Task> _asking; /**< why the list is empty */
    TaskThreads _threads;   /**< goes first, since its results are taken over here */
};

} // namespace Workbench
