// SPDX-License-Identifier: LGPL-3.0-or-later

#include "overviewaxes.h"

#include "distanceaxis.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QEvent>

#include <algorithm>

using namespace Tellarix;
using Norvu::Gui::MultiTraceWidget;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** On a sphere of the Earth's mean radius. */
constexpr double KmPerDegree = 111.195;
/** Beyond the nearest and farthest row, as a share of what is between them. */
constexpr double ExtentMargin = 0.06;

/** A time scale that runs down, as wide as its texts are. */
class DownwardTimeScale : public Gui::TimeScale
{
public:
    explicit DownwardTimeScale(QWidget *parent) : TimeScale(parent, Qt::WindowFlags(), Left)
    {
        setAutoScaleEnabled(true);
        setAutoFillBackground(true);
    }

    QSize sizeHint() const override
    {
        int width = fontMetrics().horizontalAdvance("0000-00-00");
        QString text;
        for (int line = 0; line < lineCount(); ++line) {
            const double value = upper() + offset();
            if (getTickText(value, value + majorSpacing(), line, text))
                width = std::max(width, fontMetrics().horizontalAdvance(text));
        }
        const int besideText = TimeScale::sizeHint().width() - fontMetrics().height() -
                               fontMetrics().horizontalAdvance("-0.0e+00");
        return {width + besideText + Trace::Padding(), TimeScale::sizeHint().height()};
    }
};

std::optional<double> distanceOf(const Trace &row)
{
    const QVariant distance = row.data(Norvu::Gui::TraceDistance);
    return distance.isValid() ? std::optional<double>(distance.toDouble()) : std::nullopt;
}

} // namespace

OverviewAxes::OverviewAxes(TraceView *view, MultiTraceWidget *overview)
    : QObject(overview), _view(view), _overview(overview),
      _timeScale(new DownwardTimeScale(overview)), _distanceAxis(new DistanceAxis(overview)),
      _notice(new QLabel)
{
    _timeScale->hide();
    _distanceAxis->hide();
    _notice->hide();
    _overview->setTurnedTimeScale(_timeScale);
    _overview->installEventFilter(this);

    connect(_timeScale, SIGNAL(rangeChangeRequested(double, double)), this,
            SLOT(requestRange(double, double)));
    connect(_timeScale, SIGNAL(changedInterval(double, double, double)), this, SLOT(updateTime()));
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateTime()));
    connect(view, SIGNAL(alignmentChanged(Tellarix::Core::Time)), this, SLOT(updateTime()));
    connect(view, SIGNAL(layoutOrContentChanged()), this, SLOT(update()));
}

OverviewAxes::~OverviewAxes()
{
    if (_notice && !_notice->parent())
        delete _notice;
}

bool OverviewAxes::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Resize:
    case QEvent::Move: // scrolled
    case QEvent::Show:
        place();
        break;
    case QEvent::FontChange:
        update();
        break;
    default:
        break;
    }
    return false;
}

void OverviewAxes::setDistancesShown(bool show)
{
    _areDistancesShown = show;
    update();
}

void OverviewAxes::setDegreesShown(bool show)
{
    _areDegreesShown = show;
    update();
}

void OverviewAxes::setLocalTimeShown(bool show)
{
    _timeScale->setLocalTimeShown(show);
    update();
}

/** A vertical scale begins at the bottom, where the later times are. */
void OverviewAxes::requestRange(double bottom, double top)
{
    emit _view->timeScale()->rangeChangeRequested(std::min(bottom, top), std::max(bottom, top));
}

void OverviewAxes::updateTime()
{
    const Gui::TimeScale *scale = _view->timeScale();
    _timeScale->setAbsoluteTimeEnabled(scale->isAbsoluteTimeEnabled());
    _timeScale->setAlignment(scale->alignment());
    _timeScale->setRange(scale->upper(), scale->lower());
    updateMargins();
}

std::optional<double> OverviewAxes::shareOf(const Trace &row) const
{
    const std::optional<double> distance = distanceOf(row);
    if (!distance)
        return std::nullopt;
    return (*distance - _extent.lower) / (_extent.upper - _extent.lower);
}

/** The distances of the rows that are shown. */
void OverviewAxes::updateExtent()
{
    int left = 0;
    QVector<double> distances;
    for (const Trace *row : _view->items()) {
        if (row->isTakenOut() || !row->recordWidget()->displayedRecords(0))
            continue;
        if (const std::optional<double> distance = distanceOf(*row))
            distances.append(*distance);
        else
            ++left;
    }
    updateNotice(distances.size(), left);

    _extent = Extent();
    if (!distances.isEmpty()) {
        const auto [nearest, farthest] = std::minmax_element(distances.begin(), distances.end());
        const double margin =
            *farthest > *nearest ? ExtentMargin * (*farthest - *nearest) : 0.5 + 0.1 * *farthest;
        _extent = {*nearest - margin, *farthest + margin};
    }
}

void OverviewAxes::updateNotice(int placed, int left)
{
    if (!_notice)
        return;
    if (placed == 0)
        _notice->setText(tr("No row has a distance: choose an event, and load its stations"));
    else
        _notice->setText(left == 1 ? tr("1 row without distance")
                                   : tr("%1 rows without distance").arg(left));
    _notice->setVisible(_overview->isActive() && _areDistancesShown && left > 0);
}

void OverviewAxes::update()
{
    const bool isTurned = _overview->orientation() == Qt::Horizontal;
    const bool isSection = _overview->isActive() && _areDistancesShown;
    _timeScale->setVisible(isTurned);
    _distanceAxis->setVisible(isSection);
    _distanceAxis->setPosition(isTurned ? Gui::Ruler::Bottom : Gui::Ruler::Left);
    _distanceAxis->setUnit(_areDegreesShown ? tr("°") : tr("km"));

    updateExtent();
    const double unit = _areDegreesShown ? KmPerDegree : 1;
    _distanceAxis->setDistances(_extent.lower / unit, _extent.upper / unit);
    if (isSection != _overview->isPlacing())
        _overview->setPlacement(isSection ? [this](const Trace &row) { return shareOf(row); }
                                          : MultiTraceWidget::Placement());
    else if (isSection)
        _overview->updateDisplay();
    requireRoom();
    updateTime();
    place();
}

void OverviewAxes::requireRoom()
{
    if (!_overview->isActive()) {
        emit roomRequired(-1);
        return;
    }
    const int axis = _distanceAxis->isHidden() ? 0 : _distanceAxis->sizeHint().width();
    const int wanted = _overview->labelWidth() + 3 * Trace::Padding() + axis;
    const int present = _view->rulerSpacing() - _view->nameWidth();
    emit roomRequired(std::max(0, wanted - present));
}

void OverviewAxes::updateMargins()
{
    const bool isTurned = _overview->orientation() == Qt::Horizontal;
    QMargins margins;
    if (isTurned)
        margins.setLeft(_timeScale->sizeHint().width());
    if (isTurned && !_distanceAxis->isHidden())
        margins.setBottom(_distanceAxis->sizeHint().height());
    if (margins == _overview->contentsMargins())
        return;
    _overview->setContentsMargins(margins);
    _overview->updateDisplay();
    place();
}

void OverviewAxes::place()
{
    const QRect area = _overview->drawingArea();
    // It stays in sight while many rows are scrolled past it.
    const int left = std::max(0, -_overview->x());
    _timeScale->setGeometry(left, area.top(), _overview->contentsMargins().left(), area.height());
    const QSize size = _distanceAxis->sizeHint();
    if (_distanceAxis->isVertical())
        _distanceAxis->setGeometry(area.left() - size.width(), area.top(), size.width(),
                                   area.height());
    else
        _distanceAxis->setGeometry(area.left(), area.bottom() + 1, area.width(), size.height());
}

} // namespace Workbench
