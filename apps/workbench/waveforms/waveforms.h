// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterdefinition.h>
#include <tellarix/core/timewindow.h>

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QVector>
#include <QWidget>

class QAction;

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
class MeasuringTool;
class RowMargins;
class SourceQueue;

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

    /**
     * Begins to load files and record streams into the rows, beside what is there, and to show the
     * first stretch of their data, which the user can leave at any time. Whatever can be read is
     * shown, also where there were problems.
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
     * Filters all rows by a filter in its text form; an empty text takes the filter away.
     * @return one text for each sampling frequency that the filter doesn't fit
     */
    QStringList setFilter(const QString &text);

    /** Rows without a header line, their names inside the traces; for many rows at once. */
    bool isCompact() const { return _compact; }

    /** Distances and azimuths by "NET.STA", shown beside the names; distances are sorted by. */
    void setPaths(const QHash<QString, EventPath> &paths);
    const QHash<QString, EventPath> &paths() const { return _paths; }

    /** Actions for the menu of a row, below those of other panels. */
    void setRowActions(const QList<QAction *> &actions) { _rowActions = actions; }

    /** Stretches of data in time order. */
    const QVector<Tellarix::Core::TimeWindow> &stretches() const { return _stretches; }

public slots:
    /** Reads what was opened once more, into the rows that were reset and for what came since. */
    void reload();
    void setCompact(bool compact);
    /** Shows physical units where one gain is known for all of a row, and counts elsewhere. */
    void updateUnits();
    /** Local times below those in UTC. */
    void setLocalTimeShown(bool show);
    /** An amplitude ruler with the unit at the right of each row. */
    void setRulersShown(bool show);
    void showAllData();
    void showNextStretch();
    void showPreviousStretch();

signals:
    /** What was wrong with sources, one text each. */
    void problems(const QStringList &messages);
    /** What is under the pointer, or nothing. */
    void pointerText(const QString &text);
    /** Which time is shown. */
    void rangeText(const QString &text);
    void compactChanged(bool compact);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private slots:
    void updateRangeText();
    void showArrivals();
    void endLoad(const QStringList &messages);

private:
    bool load(const QStringList &sources);
    void prepareResetRows();
    void markLoaded();
    QList<Norvu::Gui::Trace *> dressNewRows();
    void showFirstStretch();
    void dress(Norvu::Gui::Trace *row);
    bool updateUnit(Norvu::Gui::Trace *row);
    void collectStretches();
    void showNeighbour(int step);
    QString textAt(Tellarix::Gui::RecordWidget *widget, const QPoint &position) const;

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    RowMargins *_margins;
    MeasuringTool *_measuringTool;
    SourceQueue *_queue;
    QStringList _sources;
    QList<QAction *> _rowActions;
    QVector<Tellarix::Core::TimeWindow> _stretches;
    QHash<QString, EventPath> _paths;
    Tellarix::Math::Filtering::FilterDefinition _filter;
    bool _compact{false};

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
