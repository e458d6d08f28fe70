// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/qt/records/pacedupdate_p.h>
#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordmarkers_p.h>
#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowpointer_p.h>

#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

constexpr double LargestMagnification = 1E9;
// Least distance of repaints for fed records in ms: while a day is loaded, painting each of its
// records would take longer than reading it.
constexpr int FeedInterval = 200;

} // namespace

RecordWidget::RecordWidget(QWidget *parent) : RecordWidget(DataModel::WaveformStreamID(), parent)
{}

RecordWidget::RecordWidget(const DataModel::WaveformStreamID &streamID, QWidget *parent)
    : QWidget(parent), _streamID(streamID),
      _row(std::make_unique<RecordRow>([this](int slot) { finishJob(slot); })),
      _markers(std::make_unique<RecordMarkers>()), _pointer(std::make_unique<RowPointer>()),
      _fedUpdate(std::make_unique<PacedUpdate>(this, FeedInterval))
{}

RecordWidget::~RecordWidget()
{
    for (const auto &marker : *_markers)
        marker->_parent = nullptr;
}

// Layout

QRect RecordWidget::canvasRect() const
{
    return _row->axis.canvasOf(rect());
}

int RecordWidget::canvasWidth() const
{
    return canvasRect().width();
}

int RecordWidget::canvasOffset() const
{
    return canvasRect().left();
}

RecordWidget::DrawMode RecordWidget::drawMode() const
{
    return _row->items.mode;
}

void RecordWidget::setDrawMode(DrawMode mode)
{
    if (mode == _row->items.mode)
        return;

    _row->items.mode = mode;
    updateAll();
}

int RecordWidget::streamYPos(int slot) const
{
    return _row->items.isDrawn(slot) ? _row->items.rectOf(slot, canvasRect()).top() : -1;
}

int RecordWidget::streamHeight(int slot) const
{
    return _row->items.rectOf(slot, canvasRect()).height();
}

// Time axis

Core::Time RecordWidget::alignment() const
{
    return _row->times.alignment;
}

double RecordWidget::tmin() const
{
    return _row->times.tmin;
}

double RecordWidget::tmax() const
{
    return _row->times.tmax;
}

double RecordWidget::timeScale() const
{
    return _row->times.pixelsPerSecond;
}

Core::Time RecordWidget::leftTime() const
{
    return _row->times.left();
}

Core::Time RecordWidget::rightTime() const
{
    return _row->times.right(canvasWidth());
}

int RecordWidget::mapTime(double seconds) const
{
    return canvasOffset() + _row->times.xOf(seconds);
}

int RecordWidget::mapTime(const Core::Time &time) const
{
    return canvasOffset() + _row->times.xOf(time);
}

int RecordWidget::mapCanvasTime(const Core::Time &time) const
{
    return _row->times.xOf(time);
}

Core::Time RecordWidget::unmapTime(int x) const
{
    return _row->times.timeAt(x - canvasOffset());
}

Core::Time RecordWidget::unmapCanvasTime(int x) const
{
    return _row->times.timeAt(x);
}

void RecordWidget::setAlignment(Core::Time alignment)
{
    if (alignment == _row->times.alignment)
        return;

    _row->times.alignment = alignment;
    _row->forgetTraces();
    updateCanvas();
}

bool RecordWidget::setTimeScale(double pixelsPerSecond)
{
    if (!(pixelsPerSecond > 0) || !std::isfinite(pixelsPerSecond))
        return false;

    _rangeAwaitsSize = false;
    if (pixelsPerSecond == _row->times.pixelsPerSecond)
        return true;

    _row->times.pixelsPerSecond = pixelsPerSecond;
    _row->forgetTraces();
    updateCanvas();
    return true;
}

bool RecordWidget::setTimeRange(double tmin, double tmax)
{
    if (!std::isfinite(tmin) || !std::isfinite(tmax))
        return false;

    _rangeAwaitsSize = false;
    const bool moved = tmin != _row->times.tmin;
    _row->times.tmin = tmin;
    _row->times.tmax = tmax;
    if (!moved)
        return true;

    _row->forgetTraces();
    updateCanvas();
    return true;
}

bool RecordWidget::showTimeRange(double tmin, double tmax)
{
    if (!(tmin < tmax) || !std::isfinite(tmax - tmin))
        return false;

    if (canvasWidth() > 0 && !setTimeScale(canvasWidth() / (tmax - tmin)))
        return false;
    setTimeRange(tmin, tmax);
    _rangeAwaitsSize = !_laidOut || canvasWidth() <= 0;
    return true;
}

// Amplitude axis

QPair<double, double> RecordWidget::amplitudeRange(int slot) const
{
    const AmplitudeScale &scale = _row->amplitudes;
    const ShownRange range = _row->rangeOf(slot);
    if (range.empty)
        return {0.0, 0.0};
    if (!scale.automatic && scale.minimum == scale.maximum)
        return {scale.minimum, scale.maximum};
    return {range.lower, range.upper};
}

QPair<double, double> RecordWidget::amplRange() const
{
    return {_row->amplitudes.minimum, _row->amplitudes.maximum};
}

bool RecordWidget::isAmplAutoScaleEnabled() const
{
    return _row->amplitudes.automatic;
}

double RecordWidget::magnification() const
{
    return _row->amplitudes.magnification;
}

const Core::TimeWindow &RecordWidget::normalizationWindow() const
{
    return _row->amplitudes.normalizationWindow;
}

bool RecordWidget::areScaledValuesShown() const
{
    return _row->showsScaledValues;
}

double RecordWidget::shownFactor(int slot) const
{
    return _row->shownFactor(slot);
}

double RecordWidget::unmapAmplitude(int slot, int y) const
{
    const QRect area = _row->items.rectOf(slot, canvasRect());
    return _row->rangeOf(slot).valueAt(y - area.top(), area.height());
}

int RecordWidget::mapAmplitude(int slot, double value) const
{
    const QRect area = _row->items.rectOf(slot, canvasRect());
    return area.top() + _row->rangeOf(slot).yOf(value, area.height());
}

void RecordWidget::setAmplRange(double minimum, double maximum)
{
    if (!std::isfinite(minimum) || !std::isfinite(maximum))
        return;
    if (amplRange() == qMakePair(minimum, maximum))
        return;

    _row->amplitudes.setRange(minimum, maximum);
    if (!_row->amplitudes.automatic)
        updateAll();
}

void RecordWidget::setAmplAutoScaleEnabled(bool enable)
{
    if (enable == _row->amplitudes.automatic)
        return;

    _row->amplitudes.automatic = enable;
    updateAll();
}

void RecordWidget::setMagnification(double magnification)
{
    if (!(magnification >= 1 / LargestMagnification) || !(magnification <= LargestMagnification) ||
        magnification == _row->amplitudes.magnification)
        return;

    _row->amplitudes.magnification = magnification;
    _row->forgetExtrema();
    updateAll();
}

void RecordWidget::setNormalizationWindow(const Core::TimeWindow &window)
{
    if (window == _row->amplitudes.normalizationWindow)
        return;

    _row->amplitudes.normalizationWindow = window;
    _row->forgetExtrema();
    if (_row->amplitudes.automatic)
        updateAll();
}

void RecordWidget::showScaledValues(bool show)
{
    if (show == _row->showsScaledValues)
        return;

    _row->showsScaledValues = show;
    updateAll();
}

// Axis column and grid

bool RecordWidget::isAxisDrawn() const
{
    return _row->axis.drawn;
}

RecordWidget::AxisPosition RecordWidget::axisPosition() const
{
    return _row->axis.position;
}

int RecordWidget::axisWidth() const
{
    return _row->axis.width;
}

int RecordWidget::axisSpacing() const
{
    return _row->axis.spacing;
}

void RecordWidget::setDrawAxis(bool draw)
{
    if (draw == _row->axis.drawn)
        return;

    _row->axis.drawn = draw;
    updateAll();
}

void RecordWidget::setAxisPosition(AxisPosition position)
{
    if (position == _row->axis.position)
        return;

    _row->axis.position = position;
    updateAll();
}

void RecordWidget::setAxisWidth(int width)
{
    if (width < 0 || width == _row->axis.width)
        return;

    _row->axis.width = width;
    updateAll();
}

void RecordWidget::setAxisSpacing(int spacing)
{
    if (spacing < 0 || spacing == _row->axis.spacing)
        return;

    _row->axis.spacing = spacing;
    updateAll();
}

void RecordWidget::setGridSpacing(double major, double minor, double offset)
{
    RowGrid &grid = _row->grid;
    if (major == grid.major && minor == grid.minor && offset == grid.offset)
        return;

    grid.major = major;
    grid.minor = minor;
    grid.offset = offset;
    updateCanvas();
}

bool RecordWidget::setGridVRange(double lower, double upper)
{
    if (!std::isfinite(lower) || !std::isfinite(upper))
        return false;
    if (lower == _row->grid.lower && upper == _row->grid.upper)
        return true;

    _row->grid.lower = lower;
    _row->grid.upper = upper;
    updateCanvas();
    return true;
}

} // namespace Gui
} // namespace Tellarix
