// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordwidget_p.h>
#include <tellarix/qt/scheme.h>

#include <QEvent>
#include <QPointer>
#include <QResizeEvent>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

constexpr int MaximumSlots = 4096;
// Far beyond any screen, and sums with it stay within an int.
constexpr double PixelLimit = 1 << 30;
// Times are whole microseconds, so a pixel border can be missed by rounding alone.
constexpr double PixelTolerance = 1E-6;

} // namespace

RecordWidget::RecordWidget(QWidget *parent) : RecordWidget(DataModel::WaveformStreamID(), parent)
{}

RecordWidget::RecordWidget(const DataModel::WaveformStreamID &streamID, QWidget *parent)
    : QWidget(parent), _streamID(streamID)
{}

RecordWidget::~RecordWidget()
{
    for (const auto &marker : _markers)
        marker->_parent = nullptr;
}

// Slots

RecordWidget::Slot *RecordWidget::slotAt(int slot) const
{
    return slot >= 0 && slot < slotCount() ? _slots[static_cast<size_t>(slot)].get() : nullptr;
}

RecordWidget::Slot *RecordWidget::makeSlot(int slot)
{
    if (slot < 0 || slot >= MaximumSlots)
        return nullptr;
    // Without a word: whoever asked for the slot is not done with it.
    addSlots(slot + 1);
    return slotAt(slot);
}

void RecordWidget::addSlots(int count)
{
    if (count <= slotCount())
        return;

    while (slotCount() < count)
        _slots.push_back(std::make_unique<Slot>());
    forgetPolylines();
    update();
}

bool RecordWidget::setSlotCount(int count)
{
    if (count < 0 || count > MaximumSlots)
        return false;
    if (count == slotCount())
        return true;

    const QPointer<RecordWidget> alive(this);
    const int present = slotCount();
    for (int i = count; alive && i < present; ++i)
        setRecords(i, nullptr);
    if (!alive)
        return true;

    if (count < slotCount())
        _slots.resize(static_cast<size_t>(count));
    addSlots(count);
    updateAll();
    return true;
}

bool RecordWidget::setRecords(int slot, RecordSequence *sequence, bool owner)
{
    if (slot < 0 || slot >= MaximumSlots)
        return false;
    if (sequence == nullptr && slot >= slotCount())
        return true;

    makeSlot(slot);
    forgetFiltered(slot);
    slotAt(slot)->setRaw(sequence, owner);
    filterInBackground(slot);
    forgetExtrema();
    notifyRecords(slot);
    const QPointer<RecordWidget> alive(this);
    updateAll();
    if (alive)
        announceFiltering();
    return true;
}

RecordSequence *RecordWidget::records(int slot) const
{
    const Slot *item = slotAt(slot);
    return item != nullptr ? item->raw : nullptr;
}

bool RecordWidget::ownsRecords(int slot) const
{
    const Slot *item = slotAt(slot);
    return item != nullptr && item->ownsRaw;
}

void RecordWidget::clearRecords()
{
    const QPointer<RecordWidget> alive(this);
    for (int i = 0; alive && i < slotCount(); ++i)
        setRecords(i, nullptr);
}

const double *RecordWidget::recordScale(int slot) const
{
    const Slot *item = slotAt(slot);
    return item != nullptr && item->scale ? &*item->scale : nullptr;
}

void RecordWidget::setRecordScale(int slot, double scale)
{
    Slot *item = makeSlot(slot);
    if (item == nullptr || item->scale == scale)
        return;

    item->scale = scale;
    updateAll();
}

void RecordWidget::removeRecordScale(int slot)
{
    Slot *item = slotAt(slot);
    if (item == nullptr || !item->scale)
        return;

    item->scale.reset();
    updateAll();
}

QString RecordWidget::recordLabel(int slot) const
{
    const Slot *item = slotAt(slot);
    return item != nullptr ? item->label : QString();
}

void RecordWidget::setRecordLabel(int slot, const QString &label)
{
    Slot *item = makeSlot(slot);
    if (item == nullptr)
        return;
    item->label = label;
    update();
}

QString RecordWidget::recordID(int slot) const
{
    const Slot *item = slotAt(slot);
    return item != nullptr ? item->id : QString();
}

void RecordWidget::setRecordID(int slot, const QString &id)
{
    Slot *item = makeSlot(slot);
    if (item == nullptr)
        return;
    item->id = id;
    update();
}

QString RecordWidget::recordUnit(int slot) const
{
    const Slot *item = slotAt(slot);
    return item != nullptr ? item->unit : QString();
}

void RecordWidget::setRecordUnit(int slot, const QString &unit)
{
    Slot *item = makeSlot(slot);
    if (item == nullptr)
        return;
    item->unit = unit;
    update();
}

QPen RecordWidget::recordPen(int slot) const
{
    const Slot *item = slotAt(slot);
    if (item != nullptr && item->pen)
        return *item->pen;

    const Scheme::Records &scheme = Scheme::Current().records;
    const bool overlaid = _drawMode == Overlaid && slot > 0;
    QPen pen(overlaid ? scheme.alternateForeground : scheme.foreground, scheme.lineWidth);
    pen.setCosmetic(true);
    return pen;
}

void RecordWidget::setRecordPen(int slot, const QPen &pen)
{
    Slot *item = makeSlot(slot);
    if (item == nullptr)
        return;
    item->pen = pen;
    update();
}

void RecordWidget::removeRecordPen(int slot)
{
    Slot *item = slotAt(slot);
    if (item == nullptr || !item->pen)
        return;
    item->pen.reset();
    update();
}

bool RecordWidget::isRecordVisible(int slot) const
{
    const Slot *item = slotAt(slot);
    return item != nullptr && item->visible;
}

void RecordWidget::setRecordVisible(int slot, bool visible)
{
    Slot *item = makeSlot(slot);
    if (item == nullptr || item->visible == visible)
        return;

    item->visible = visible;
    updateAll();
}

RecordWidget::TraceInfo *RecordWidget::traceInfo(int slot, bool filtered) const
{
    Slot *item = slotAt(slot);
    return item != nullptr ? &item->traces[filtered ? 1 : 0] : nullptr;
}

void RecordWidget::setCurrentRecords(int slot)
{
    if (slot < 0 || slot == _currentSlot)
        return;

    _currentSlot = slot;
    updateAll();
}

// Layout of slots

bool RecordWidget::isSlotDrawn(int slot) const
{
    return isRecordVisible(slot) && (_drawMode != Single || slot == _currentSlot);
}

QVector<int> RecordWidget::drawnSlots() const
{
    QVector<int> result;
    for (int i = 0; i < slotCount(); ++i) {
        if (isSlotDrawn(i))
            result.append(i);
    }
    return result;
}

QRect RecordWidget::slotRect(int slot) const
{
    if (!isSlotDrawn(slot))
        return {};

    const QRect canvas = canvasRect();
    if (_drawMode != InRows)
        return canvas;

    const QVector<int> rows = drawnSlots();
    const int row = rows.indexOf(slot);
    const auto topOf = [&](int index) {
        return canvas.top() + static_cast<int>(qint64(canvas.height()) * index / rows.size());
    };
    return QRect(canvas.left(), topOf(row), canvas.width(), topOf(row + 1) - topOf(row));
}

int RecordWidget::slotAtY(int y) const
{
    for (const int slot : drawnSlots()) {
        const QRect area = slotRect(slot);
        if (y >= area.top() && y <= area.bottom())
            return slot;
    }
    return -1;
}

int RecordWidget::streamYPos(int slot) const
{
    return isSlotDrawn(slot) ? slotRect(slot).top() : -1;
}

int RecordWidget::streamHeight(int slot) const
{
    return isSlotDrawn(slot) ? slotRect(slot).height() : 0;
}

void RecordWidget::setDrawMode(DrawMode mode)
{
    if (mode == _drawMode)
        return;

    _drawMode = mode;
    updateAll();
}

// Time axis

Core::Time RecordWidget::leftTime() const
{
    return _alignment + Core::TimeSpan(_tmin);
}

Core::Time RecordWidget::rightTime() const
{
    return leftTime() + Core::TimeSpan(canvasWidth() / _pixelsPerSecond);
}

int RecordWidget::mapTime(double seconds) const
{
    return canvasOffset() + mapCanvasSeconds(seconds);
}

int RecordWidget::mapTime(const Core::Time &time) const
{
    return mapTime((time - _alignment).length());
}

int RecordWidget::mapCanvasTime(const Core::Time &time) const
{
    return mapCanvasSeconds((time - _alignment).length());
}

int RecordWidget::mapCanvasSeconds(double seconds) const
{
    const double x = (seconds - _tmin) * _pixelsPerSecond;
    if (std::isnan(x))
        return 0;
    return static_cast<int>(std::floor(std::clamp(x, -PixelLimit, PixelLimit) + PixelTolerance));
}

Core::Time RecordWidget::unmapTime(int x) const
{
    return unmapCanvasTime(x - canvasOffset());
}

Core::Time RecordWidget::unmapCanvasTime(int x) const
{
    return leftTime() + Core::TimeSpan(x / _pixelsPerSecond);
}

void RecordWidget::setAlignment(Core::Time alignment)
{
    if (alignment == _alignment)
        return;

    _alignment = alignment;
    forgetPolylines();
    updateCanvas();
}

bool RecordWidget::setTimeScale(double pixelsPerSecond)
{
    if (!(pixelsPerSecond > 0) || !std::isfinite(pixelsPerSecond))
        return false;

    _rangeAwaitsSize = false;
    if (pixelsPerSecond == _pixelsPerSecond)
        return true;

    _pixelsPerSecond = pixelsPerSecond;
    forgetPolylines();
    updateCanvas();
    return true;
}

bool RecordWidget::setTimeRange(double tmin, double tmax)
{
    if (!std::isfinite(tmin) || !std::isfinite(tmax))
        return false;

    _rangeAwaitsSize = false;
    const bool moved = tmin != _tmin;
    _tmin = tmin;
    _tmax = tmax;
    if (!moved)
        return true;

    forgetPolylines();
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

void RecordWidget::setGridSpacing(double major, double minor, double offset)
{
    if (major == _gridMajor && minor == _gridMinor && offset == _gridOffset)
        return;

    _gridMajor = major;
    _gridMinor = minor;
    _gridOffset = offset;
    updateCanvas();
}

bool RecordWidget::setGridVRange(double lower, double upper)
{
    if (!std::isfinite(lower) || !std::isfinite(upper))
        return false;
    if (lower == _gridLower && upper == _gridUpper)
        return true;

    _gridLower = lower;
    _gridUpper = upper;
    updateCanvas();
    return true;
}

// Axis column

QRect RecordWidget::canvasRect() const
{
    const int axis = _drawAxis ? std::min(_axisWidth, width()) : 0;
    return rect().adjusted(_axisPosition == AxisLeft ? axis : 0, 0,
                           _axisPosition == AxisRight ? -axis : 0, 0);
}

void RecordWidget::setTracesPale(bool pale)
{
    if (pale == _tracesPale)
        return;

    _tracesPale = pale;
    updateCanvas();
}

void RecordWidget::setDrawAxis(bool draw)
{
    if (draw == _drawAxis)
        return;

    _drawAxis = draw;
    updateAll();
}

void RecordWidget::setAxisPosition(AxisPosition position)
{
    if (position == _axisPosition)
        return;

    _axisPosition = position;
    updateAll();
}

void RecordWidget::setAxisWidth(int width)
{
    if (width < 0 || width == _axisWidth)
        return;

    _axisWidth = width;
    updateAll();
}

void RecordWidget::setAxisSpacing(int spacing)
{
    if (spacing < 0 || spacing == _axisSpacing)
        return;

    _axisSpacing = spacing;
    updateAll();
}

void RecordWidget::showScaledValues(bool show)
{
    if (show == _showScaledValues)
        return;

    _showScaledValues = show;
    updateAll();
}

// Updates

void RecordWidget::setDirty()
{
    forgetExtrema();
    for (const auto &slot : _slots)
        slot->stretchesKnown = false;
    forgetPolylines();
}

void RecordWidget::forgetPolylines()
{
    for (const auto &slot : _slots) {
        slot->traces[0].dirty = true;
        slot->traces[1].dirty = true;
    }
}

/** Slots, amplitudes or their layout have changed. */
void RecordWidget::updateAll()
{
    forgetPolylines();
    update();
    emit traceUpdated(this);
}

/** Only what the canvas shows has changed. */
void RecordWidget::updateCanvas()
{
    update(canvasRect());
}

QSize RecordWidget::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return QSize((_drawAxis ? _axisWidth : 0) + 20 * metrics.averageCharWidth(),
                 4 * metrics.height());
}

void RecordWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    forgetPolylines();
    if (canvasWidth() <= 0)
        return;

    _laidOut = true;
    if (_rangeAwaitsSize)
        showTimeRange(_tmin, _tmax);
}

void RecordWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::EnabledChange:
    case QEvent::PaletteChange:
        update();
        break;
    default:
        break;
    }
}

} // namespace Gui
} // namespace Tellarix
