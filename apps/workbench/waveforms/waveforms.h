// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterdefinition.h>
#include <tellarix/core/timewindow.h>

#include <QHash>
#include <QList>
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
    /** What came of opening something. */
    struct Outcome
    {
        bool ok{true};        /**< everything could be opened and gave data */
        QStringList messages; /**< problems, one text each */
    };

    explicit Waveforms(Bench *bench, QWidget *parent = nullptr);

    Norvu::Gui::TraceView *view() const { return _view; }
    MeasuringTool *measuringTool() const { return _measuringTool; }

    /**
     * Loads files and record streams into the rows, beside what is there, and shows the first
     * stretch of their data. Whatever can be read is shown, also where there were problems.
     */
    Outcome open(const QStringList &sources);
    /** Marks a time, such as that of an earthquake, in all rows; what is visible stays. */
    void alignTo(const Tellarix::Core::Time &time);
    /** Takes all rows away. */
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
    /** Problems of a reload, one text each. */
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

private:
    void load(const QString &source, Outcome &outcome);
    void prepareResetRows();
    void markLoaded();
    void adoptRows(int first);
    void dress(Norvu::Gui::Trace *row);
    bool updateUnit(Norvu::Gui::Trace *row);
    void collectStretches();
    void showNeighbour(int step);
    QString textAt(Tellarix::Gui::RecordWidget *widget, const QPoint &position) const;

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    RowMargins *_margins;
    MeasuringTool *_measuringTool;
    QStringList _sources;
    QList<QAction *> _rowActions;
    QVector<Tellarix::Core::TimeWindow> _stretches;
    QHash<QString, EventPath> _paths;
    Tellarix::Math::Filtering::FilterDefinition _filter;
    bool _compact{false};
};

} // namespace Workbench
