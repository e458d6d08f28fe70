// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "coverage.h"

#include <tellarix/core/timewindow.h>

#include <QList>
#include <QSet>
#include <QStringList>
#include <QVector>
#include <QWidget>

class QAction;
class QLabel;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;
class DataStrip;
class LiveFollow;
class LiveSources;
class MeasuringTool;
class Navigation;
class OutageNotice;
class PointerReport;
class RowColors;
class RowCommands;
class RowFilters;
class RowGroups;
class RowLooks;
class RowMargins;
class RowOrder;
class RowVisibility;
class SourceQueue;
class TimeGestures;

/** The waveforms: a trace view, what has been opened into it, and ways through its data. */
class Waveforms : public QWidget
{
    Q_OBJECT

public:
    explicit Waveforms(Bench *bench, QWidget *parent = nullptr);

    Norvu::Gui::TraceView *view() const { return _view; }
    MeasuringTool *measuringTool() const { return _measuringTool; }
    Navigation *navigation() const { return _navigation; }
    RowVisibility *visibility() const { return _visibility; }
    RowOrder *order() const { return _order; }
    RowGroups *groups() const { return _groups; }
    RowCommands *commands() const { return _commands; }
    RowColors *colors() const { return _colors; }
    RowLooks *looks() const { return _looks; }
    RowFilters *filters() const { return _filters; }
    TimeGestures *gestures() const { return _gestures; }
    PointerReport *pointer() const { return _pointer; }
    LiveSources *live() const { return _live; }
    LiveFollow *follow() const { return _follow; }

    /**
     * Begins to load files and record streams into the rows, beside what is there. The first data
     * of all are brought into view, which the user can leave at any time; with later ones the view
     * stays if they have data in it, and goes to them if not. Sources that go on with the present
     * are followed as soon as data come. Whatever can be read is shown, also where there were
     * problems.
     * @return false, which problems() tells, if one of them can't be opened
     */
    bool open(const QStringList &sources);
    bool isLoading() const;
    /** Marks a time, such as that of an earthquake, in all rows, also in those that are being
     *  loaded; what is visible stays. */
    void alignTo(const Tellarix::Core::Time &time);
    /** Takes all rows away, and ends a load. */
    void clear();

    /** Actions for the menu of a row, below those of other panels. */
    void setRowActions(const QList<QAction *> &actions) { _rowActions = actions; }

    /** Stretches of data in time order. */
    const QVector<Tellarix::Core::TimeWindow> &stretches() const { return _coverage.stretches(); }
    const Coverage &coverage() const { return _coverage; }

public slots:
    /** Reads what was opened once more, into the rows that were reset and for what came since. */
    void reload();
    /** Local times below those in UTC. */
    void setLocalTimeShown(bool show);
    /** An amplitude ruler with the unit at the right of each row. */
    void setRulersShown(bool show);

signals:
    /** What was wrong with sources, one text each. */
    void problems(const QStringList &messages);
    /** What is under the pointer, or nothing. */
    void pointerText(const QString &text);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void showArrivals();
    void endLoad(const QStringList &messages);
    void collectCoverage();
    void forgetClosedRows(const QStringList &streams);
    void showLiveArrivals();
    void followLiveSources();
    void followPresent();
    void updateHint();

private:
    bool load(const QStringList &sources);
    void connectLive();
    void adoptLiveRows(const QList<Norvu::Gui::Trace *> &rows);
    void adoptRow(Norvu::Gui::Trace *row);
    void prepareResetRows();
    void markLoaded();
    QList<Norvu::Gui::Trace *> dressNewRows();
    void showFirstStretch();
    void showNewData();
    bool hasUserMoved() const;
    void connectTime();
    void connectRows();

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    RowMargins *_margins;
    MeasuringTool *_measuringTool;
    SourceQueue *_queue;
    LiveSources *_live;
    LiveFollow *_follow;
    RowGroups *_groups;
    RowVisibility *_visibility;
    RowOrder *_order;
    RowCommands *_commands;
    RowColors *_colors;
    RowLooks *_looks;
    RowFilters *_filters;
    Navigation *_navigation;
    TimeGestures *_gestures;
    DataStrip *_strip;
    PointerReport *_pointer;
    OutageNotice *_outages;
    QLabel *_hint; /**< in the place of everything while there are no data */
    QStringList _sources;
    QSet<QString> _closed; /**< streams whose rows the user has closed */
    QList<QAction *> _rowActions;
    Coverage _coverage;
    bool _isLiveAwaited{false}; /**< the first data of live sources come into view */

    /** What is being loaded. */
    struct Load
    {
        bool isShown{false}; /**< its data come into view, as long as the user doesn't move it */
        bool isFirst{true};  /**< there were no rows before */
        /** Rows that were there before, and those of them and of the new ones that look alike. */
        QSet<Norvu::Gui::Trace *> others;
        QSet<Norvu::Gui::Trace *> dressed;
        int shownRecords{0};               /**< when its data were brought into view last */
        Tellarix::Core::TimeWindow window; /**< that was visible then */
        Tellarix::Core::Time alignment;    /**< asked for meanwhile */
    };
    Load _load;
};

} // namespace Workbench
