// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panel.h"

#include <QHash>
#include <QPointer>
#include <QVariantMap>

class QLabel;

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class ExportActions;
class FilterBox;
class FilterTuning;
class LiveMenu;
class OverviewMenu;
class Task;
class Waveforms;

/** The waveforms with their filter, overview, measuring tool and exports. */
class WaveformPanel : public Panel
{
    Q_OBJECT

public:
    explicit WaveformPanel(Bench *bench);

    Waveforms *waveforms() const { return _waveforms; }

    QList<QAction *> menuActions(Menu menu) const override;
    QList<QMenu *> menus() const override;
    QList<QToolBar *> toolBars() const override;
    void fillStatusBar(QStatusBar *bar) override;
    void saveState(QSettings &settings) const override;
    void restoreState(QSettings &settings) override;
    QVector<PanelPicture> pictures() override;
    QStringList fileFilters() const override;
    /** Anything, as far as can be told before it is opened. */
    bool canOpen(const QString &source) const override;
    bool openSources(const QStringList &sources) override;
    bool openDemonstration(const QString &folder) override;
    bool openRemembered() override;
    void closeAll() override;

private slots:
    void setFilter(const QString &text);
    void adjustFilter(const QString &text);
    void showFilteringProgress(int done, int total);
    void showMeasurement(const QString &text);
    void showPointer(const QString &text);
    void updateRangeLabel();

private:
    void createFilterBar();
    void createViewActions();
    QAction *addViewAction(const QString &text, const QKeySequence &key, const char *slot);
    QAction *addViewToggle(const QString &text, const QKeySequence &key, const char *slot,
                           const QString &name = QString());
    void createTraceMenu();
    void createOverviewMenu();
    void createExports();
    QAction *makeSeparator();
    QPixmap overviewPicture(bool horizontal);
    QPixmap livePicture();
    QVariantMap livePlaces() const;

    Waveforms *_waveforms;
    QList<QAction *> _viewActions;
    QHash<QString, QAction *> _remembered; /**< toggles by their names in settings */
    QToolBar *_filterBar{nullptr};
    FilterBox *_filterBox{nullptr};
    FilterTuning *_tuning{nullptr};
    QMenu *_traceMenu{nullptr};
    OverviewMenu *_overviewMenu{nullptr};
    Norvu::Gui::MultiTraceWidget *_overview{nullptr};
    ExportActions *_exports{nullptr};
    QLabel *_pointerLabel{nullptr};
    LiveMenu *_liveMenu{nullptr};
    QVariantMap _livePlaces; /**< of the last session */
    QLabel *_measurementLabel{nullptr};
    QLabel *_rangeLabel{nullptr};
    QPointer<Task> _filtering;
};

} // namespace Workbench
