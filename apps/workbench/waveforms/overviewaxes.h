// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QLabel>
#include <QObject>
#include <QPointer>

#include <optional>

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Tellarix {
namespace Gui {
class TimeScale;
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

class DistanceAxis;

/**
 * What stands beside the traces of the overview: a time scale where time runs down, and, in a
 * section of distances, their axis, along which each row stands at its distance.
 *
 * Rows without a distance are left out of a section, and a notice tells how many they are.
 */
class OverviewAxes : public QObject
{
    Q_OBJECT

public:
    /** @param overview  owns it, and the axes */
    OverviewAxes(Norvu::Gui::TraceView *view, Norvu::Gui::MultiTraceWidget *overview);
    ~OverviewAxes() override;

    /** For time that runs down; asks for ranges like that of the view. */
    Tellarix::Gui::TimeScale *timeScale() const { return _timeScale; }
    const DistanceAxis *distanceAxis() const { return _distanceAxis; }
    /** To be put into a layout, which owns it. */
    QLabel *notice() const { return _notice; }

public slots:
    /** Lays out everything again; to be called when the overview comes, goes or turns, and when
     *  rows have other distances. */
    void update();
    void setDistancesShown(bool show);
    /** Degrees of the great circle in place of kilometres. */
    void setDegreesShown(bool show);
    void setLocalTimeShown(bool show);

signals:
    /** Room that labels and axis need beside that of the axes of rows, in pixels; negative while
     *  there is no overview. */
    void roomRequired(int pixels);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void updateTime();
    void requestRange(double bottom, double top);

private:
    struct Extent
    {
        double lower{0};
        double upper{1};
    };

    std::optional<double> shareOf(const Norvu::Gui::Trace &row) const;
    void updateExtent();
    void updateNotice(int placed, int left);
    void requireRoom();
    void updateMargins();
    void place();

    Norvu::Gui::TraceView *_view;
    Norvu::Gui::MultiTraceWidget *_overview;
    Tellarix::Gui::TimeScale *_timeScale;
    DistanceAxis *_distanceAxis;
    QPointer<QLabel> _notice;
    Extent _extent; /**< of the distance axis, in km */
    bool _areDistancesShown{false};
    bool _areDegreesShown{false};
};

} // namespace Workbench
