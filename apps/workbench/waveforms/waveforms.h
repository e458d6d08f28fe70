// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "coverage.h"

#include <tellarix/core/math/filterdefinition.h>
#include <tellarix/core/timewindow.h>

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QVector>
#include <QWidget>

#include <string>

class QAction;
class QLabel;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Tellarix {
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

class Bench;
class DataStrip;
class MeasuringTool;
class PointerReport;
class RowCommands;
class RowMargins;
class RowNames;
class RowVisibility;
class SourceQueue;
class TimeGestures;
class ViewHistory;

/** The way from an event to a station. */
struct EventPath
{
    double distanceKm{0};
    double azimuth{0}; /**< at the event, in degrees */

    bool operator==(const EventPath &other) const
    {
        return distanceKm == other.distanceKm && azimuth == other.azimuth;
    }
};

/** The waveforms: a trace view, what has been opened into it, and ways through its data. */
class Waveforms : public QWidget
{
    Q_OBJECT

public:
    explicit Waveforms(Bench *bench, QWidget *parent = nullptr);

    Norvu::Gui::TraceView *view() const { return _view; }
    MeasuringTool *measuringTool() const { return _measuringTool; }
    ViewHistory *history() const { return _history; }
    RowVisibility *visibility() const { return _visibility; }
    RowCommands *commands() const { return _commands; }
    TimeGestures *gestures() const { return _gestures; }
    PointerReport *pointer() const { return _pointer; }

    /**
     * Begins to load files and record streams into the rows, beside what is there. The first data
     * of all are brought into view, which the user can leave at any time; with later ones the view
     * stays if they have data in it, and goes to them if not. Whatever can be read is shown, also
     * where there were problems.
     * @return false, which problems() tells, if one of them can't be opened
     */
    bool open(const QStringList &sources);
    bool isLoading() const;
    /** Marks a time, such as that of an earthquake, in all rows, also in those that are being
     *  loaded; what is visible stays. */
    void alignTo(const Tellarix::Core::Time &time);
    /** Takes all rows away, and ends a load. */
    void clear();

    /**
     * Filters all rows by a filter in its text form; an empty text takes the filter away. Rows with
     * a sampling frequency that the filter doesn't fit stay raw, draw palely, and say why.
     * @return one text for each sampling frequency that the filter doesn't fit
     */
    QStringList setFilter(const QString &text);

    /** Rows without a header line, their names beside the traces; as long as the user hasn't
     * chosen, once there are many rows. */
    bool isCompact() const { return _compact; }
    bool isCompactChosen() const { return _isCompactChosen; }

    /** Distances and azimuths by "NET.STA", shown beside the names; distances are sorted by. */
    void setPaths(const QHash<QString, EventPath> &paths);
    const QHash<QString, EventPath> &paths() const { return _paths; }

    /** Actions for the menu of a row, below those of other panels. */
    void setRowActions(const QList<QAction *> &actions) { _rowActions = actions; }

    /** Stretches of data in time order. */
    const QVector<Tellarix::Core::TimeWindow> &stretches() const { return _coverage.stretches(); }
    const Coverage &coverage() const { return _coverage; }

public slots:
    /** Reads what was opened once more, into the rows that were reset and for what came since. */
    void reload();
    void setCompact(bool compact);
    /** Room that the overview needs at the left, beside that of the axes of rows; negative without
     *  it. */
    void setOverviewRoom(int pixels);
    /** To be called when filtering goes on or off. */
    void updateFilterFit();
    /** Shows physical units where one gain is known for all of a row, and counts elsewhere. */
    void updateUnits();
    /** Local times below those in UTC. */
    void setLocalTimeShown(bool show);
    /** An amplitude ruler with the unit at the right of each row. */
    void setRulersShown(bool show);
    void showAllData();
    void showNextStretch();
    void showPreviousStretch();
    void zoomOut();
    /** Asks for a time, which comes into the middle of the view. */
    void askForTime();
    void goToTime(const QString &text);

signals:
    /** What was wrong with sources, one text each. */
    void problems(const QStringList &messages);
    /** What is under the pointer, or nothing. */
    void pointerText(const QString &text);
    /** Which time is shown. */
    void rangeText(const QString &text);
    void compactChanged(bool compact);
    /** Rows have other distances. */
    void pathsChanged();
    /** One text for each sampling frequency that the filter doesn't fit. */
    void filterMisfits(const QStringList &messages);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void showRange(double lower, double upper);
    void showWindow(const Tellarix::Core::TimeWindow &window);
    void leapTo(const Tellarix::Core::TimeWindow &window);
    void updateRangeText();
    void showArrivals();
    void endLoad(const QStringList &messages);
    void collectCoverage();

private:
    bool load(const QStringList &sources);
    void prepareResetRows();
    void markLoaded();
    QList<Norvu::Gui::Trace *> dressNewRows();
    void showFirstStretch();
    void showNewData();
    bool hasUserMoved() const;
    void applyCompact(bool compact);
    void fitFilter(Norvu::Gui::Trace *row);
    QStringList filterProblems() const;
    void dress(Norvu::Gui::Trace *row);
    bool updateUnit(Norvu::Gui::Trace *row);
    void connectTime();
    void updateHint();
    void showNeighbour(int step);

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    RowMargins *_margins;
    MeasuringTool *_measuringTool;
    SourceQueue *_queue;
    ViewHistory *_history;
    RowVisibility *_visibility;
    RowNames *_names;
    RowCommands *_commands;
    TimeGestures *_gestures;
    DataStrip *_strip;
    PointerReport *_pointer;
    QLabel *_hint; /**< in the place of everything while there are no data */
    QStringList _sources;
    QList<QAction *> _rowActions;
    Coverage _coverage;
    QHash<QString, EventPath> _paths;
    Tellarix::Math::Filtering::FilterDefinition _filter;
    std::string _filterText;
    bool _compact{false};
    bool _isCompactChosen{false}; /**< by the user */

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
