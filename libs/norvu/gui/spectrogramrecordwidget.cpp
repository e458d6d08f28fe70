// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogramrecordwidget.h>

#include <norvu/gui/spectrogramimage.h>
#include <tellarix/core/records/record.h>

#include <tellarix/core/records/cut.h>
#include <tellarix/core/records/recordsequence.h>

#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Core::Time;
using Core::TimeSpan;
using Core::TimeWindow;

namespace Norvu {
namespace Gui {

TimeSpan SpectrogramRecordWidget::Tail::tolerance() const
{
    return TimeSpan(0.5 / rate);
}

bool SpectrogramRecordWidget::Tail::covers(const Record &record) const
{
    return rate > 0 && record.startTime() - end < -tolerance();
}

bool SpectrogramRecordWidget::Tail::continuesWith(const Record &record) const
{
    return rate > 0 && record.startTime() - end <= tolerance() &&
           record.samplingFrequency() == rate;
}

SpectrogramRecordWidget::SpectrogramRecordWidget(QWidget *parent)
    : SpectrogramRecordWidget(DataModel::WaveformStreamID(), parent)
{}

SpectrogramRecordWidget::SpectrogramRecordWidget(const DataModel::WaveformStreamID &streamID,
                                                 QWidget *parent)
    : Tellarix::Gui::RecordWidget(streamID, parent)
{
    _settings.logarithmic = false;
}

SpectrogramRecordWidget::~SpectrogramRecordWidget() = default;

// Settings

void SpectrogramRecordWidget::setColorLUT(const Utils::LUT<double, unsigned int> *lut)
{
    _colorLUT = lut;
    clearSpectrogramImages();
}

void SpectrogramRecordWidget::setSpectrogramSettings(const SpectrogramSettings &settings)
{
    _settings = settings;
    recordsChanged();
    update();
}

void SpectrogramRecordWidget::setSpectrogramSettings(double lower, double upper, int divisions,
                                                     int bands)
{
    SpectrogramSettings settings;
    settings.lower = lower;
    settings.upper = upper;
    settings.mode = SpectrogramSettings::Periods;
    settings.divisions = divisions;
    settings.bands = bands;
    settings.logarithmic = true;
    setSpectrogramSettings(settings);
}

void SpectrogramRecordWidget::setSpectrogramSlot(int slot)
{
    if (slot == _slot)
        return;

    _slot = slot;
    recordsChanged();
    update();
}

void SpectrogramRecordWidget::useFilteredRecords(bool use)
{
    if (use == _useFilteredRecords)
        return;

    _useFilteredRecords = use;
    recordsChanged();
}

void SpectrogramRecordWidget::setSpectrogramTimeWindow(const TimeWindow &window)
{
    const TimeWindow before = _window;
    _window = window;
    if (before.valid() && window.valid() && window.startTime() == before.startTime() &&
        window.endTime() >= before.endTime()) {
        extendToWindow();
        update();
    } else {
        recordsChanged();
    }
}

void SpectrogramRecordWidget::setSpectrogramColumnInterval(int samples)
{
    const int interval = std::max(samples, 1);
    if (interval == _columnInterval)
        return;

    _columnInterval = interval;
    recordsChanged();
    update();
}

void SpectrogramRecordWidget::setSpectrogramEnabled(bool enable)
{
    if (enable == _enabled)
        return;

    _enabled = enable;
    if (_enabled) {
        recordsChanged();
    } else {
        _items.clear();
        update();
    }
}

void SpectrogramRecordWidget::setSpectrogramDisplayEnabled(bool enable)
{
    if (enable == _displayEnabled)
        return;

    _displayEnabled = enable;
    if (_displayEnabled)
        update();
    else
        clearSpectrogramImages();
}

void SpectrogramRecordWidget::setDrawSpectrogramInFront(bool enable)
{
    if (enable == _drawInFront)
        return;

    _drawInFront = enable;
    update();
}

void SpectrogramRecordWidget::clearSpectrogramImages()
{
    for (SpectrogramItem &item : _items)
        item = SpectrogramItem{item.spectrogram, QImage(), -1, 0};
    update();
}

// Records

RecordSequence *SpectrogramRecordWidget::spectrogramRecords(int slot) const
{
    return _useFilteredRecords ? filteredRecords(slot) : records(slot);
}

void SpectrogramRecordWidget::recordsChanged()
{
    changedRecords(_slot, spectrogramRecords(_slot));
}

void SpectrogramRecordWidget::changedRecords(int slot, RecordSequence *sequence)
{
    if (!_enabled || slot != _slot)
        return;

    _items.clear();
    // What the base class tells of is what the traces show, which may be filtered when the raw
    // records are wanted.
    const bool isShown = sequence && sequence == displayedRecords(slot);
    feedWindow(isShown ? spectrogramRecords(slot) : sequence, _window);
    update();
}

/** Feeds what a sequence holds in a window, as far as the slot's own sequence reaches back. */
void SpectrogramRecordWidget::feedWindow(const RecordSequence *sequence, const TimeWindow &window)
{
    const RecordSequence *own = spectrogramRecords(_slot);
    if (!sequence || !own)
        return;
    if (window.valid()) {
        const std::vector<RecordCPtr> cut = cutRecords(*sequence, window);
        feedRecords(cut.begin(), cut.end());
    } else {
        feedRecords(sequence->begin(), sequence->end());
    }
    trimItems(own->timeWindow());
}

/** Feeds what the sequence holds from the end of the last stretch to that of the window. */
void SpectrogramRecordWidget::extendToWindow()
{
    if (!_enabled)
        return;
    const Time from = _items.empty() ? _window.startTime() : tail().end - tail().tolerance();
    feedWindow(spectrogramRecords(_slot), TimeWindow(from, _window.endTime()));
}

void SpectrogramRecordWidget::fed(int slot, const Record *record)
{
    RecordWidget::fed(slot, record);
    if (!_enabled || slot != _slot)
        return;
    const RecordSequence *sequence = spectrogramRecords(slot);
    if (!sequence)
        return;

    // While filtering is on the sequence holds a copy of the record, or several that were waiting:
    // with the last one alone the others would look like a gap.
    if (_window.valid()) {
        extendToWindow();
        return;
    }
    int index = _items.empty() ? 0 : sequence->firstStartingFrom(tail().end - tail().tolerance());
    for (; index < sequence->size(); ++index)
        feedSpectrogram(slot, sequence->at(index));
}

void SpectrogramRecordWidget::feedSpectrogram(int slot, const Record *record)
{
    const RecordSequence *sequence = spectrogramRecords(slot);
    if (!sequence || !record || (!_items.empty() && tail().covers(*record)))
        return;

    const RecordCPtr fed(record);
    feedRecords(&fed, &fed + 1);
    trimItems(sequence->timeWindow());
}

SpectrogramRecordWidget::Tail SpectrogramRecordWidget::tail() const
{
    const RecordSpectrogram<float> &last = *_items.back().spectrogram;
    return {last.endTime(), last.samplingFrequency()};
}

void SpectrogramRecordWidget::addItem()
{
    if (!_items.empty())
        _items.back().spectrogram->finish();
    _items.push_back({new RecordSpectrogram<float>(_settings), QImage(), -1, 0});
    _items.back().spectrogram->setColumnInterval(_columnInterval);
}

/** Hands records that follow each other over together, which is faster. */
template <typename Iterator>
void SpectrogramRecordWidget::feedRecords(Iterator begin, Iterator end)
{
    std::vector<const Record *> stretch;
    Tail reached = _items.empty() ? Tail() : tail();
    for (Iterator record = begin; record != end; ++record) {
        if (!(*record)->hasEndTime() || reached.covers(**record))
            continue;
        if (!reached.continuesWith(**record)) {
            feedLast(stretch);
            stretch.clear();
            addItem();
        }
        stretch.push_back(record->get());
        reached = {(*record)->endTime(), (*record)->samplingFrequency()};
    }
    feedLast(stretch);
}

void SpectrogramRecordWidget::feedLast(const std::vector<const Record *> &records)
{
    if (records.empty())
        return;
    const SpectrogramItem &item = _items.back();
    const bool isFirst = _items.size() == 1 && item.spectrogram->isNull();
    item.spectrogram->feed(records);
    if (isFirst) {
        _minimum = item.spectrogram->minimum();
        _maximum = item.spectrogram->maximum();
    } else {
        widenRange(item);
    }
}

void SpectrogramRecordWidget::widenRange(const SpectrogramItem &item)
{
    _minimum = std::min(_minimum, item.spectrogram->minimum());
    _maximum = std::max(_maximum, item.spectrogram->maximum());
}

void SpectrogramRecordWidget::trimItems(const TimeWindow &window)
{
    if (_items.empty() || !(window.startTime() > _items.front().spectrogram->startTime()))
        return;

    bool removed = false;
    while (!_items.empty()) {
        SpectrogramItem &item = _items.front();
        RecordSpectrogram<float> &spectrogram = *item.spectrogram;
        const Time start = spectrogram.startTime();
        // Rounding must not take the last column, behind which the next record goes on.
        const TimeSpan tolerance(0.5 / spectrogram.samplingFrequency());
        spectrogram.trim(window.startTime(), window.endTime() + tolerance);
        if (!spectrogram.isNull()) {
            // The picture may keep its size, but begins with another column.
            if (spectrogram.startTime() != start)
                item = SpectrogramItem{item.spectrogram, QImage(), -1, 0};
            break;
        }
        _items.pop_front();
        removed = true;
    }
    if (!removed)
        return;

    _minimum = _items.empty() ? 0 : _items.front().spectrogram->minimum();
    _maximum = _items.empty() ? 0 : _items.front().spectrogram->maximum();
    for (const SpectrogramItem &item : _items)
        widenRange(item);
}

QPair<double, double> SpectrogramRecordWidget::spectrogramRange() const
{
    const bool isKnown = !_items.empty() && _minimum <= _maximum;
    return isKnown ? qMakePair(_minimum, _maximum) : qMakePair(0.0, 0.0);
}

size_t SpectrogramRecordWidget::sizeOf(const std::deque<SpectrogramItem> &items)
{
    size_t size = 0;
    for (const SpectrogramItem &item : items)
        size += sizeof(float) * static_cast<size_t>(item.spectrogram->columns()) *
                static_cast<size_t>(item.spectrogram->rows());
    return size;
}

bool SpectrogramRecordWidget::spectrogramAt(const QPoint &point, double *position,
                                            double *amplitude) const
{
    const QRect canvas = spectrogramRect();
    if (!canvas.contains(point))
        return false;
    const Time time = unmapTime(point.x());
    for (const SpectrogramItem &item : _items) {
        const RecordSpectrogram<float> &spectrogram = *item.spectrogram;
        const int column = spectrogram.mapTime(time);
        if (time < spectrogram.startTime() || column >= spectrogram.columns() ||
            spectrogram.rows() < 1)
            continue;
        *position = static_cast<double>(canvas.bottom() - point.y()) / canvas.height();
        const int row = std::min(static_cast<int>(std::lround(*position * spectrogram.rows())),
                                 spectrogram.rows() - 1);
        *amplitude =
            spectrogram
                .data()[static_cast<size_t>(column) * static_cast<size_t>(spectrogram.rows()) +
                        static_cast<size_t>(row)];
        return true;
    }
    return false;
}

// Painting

void SpectrogramRecordWidget::customPaintTracesBegin(QPainter &painter)
{
    if (_displayEnabled && !_drawInFront)
        drawSpectrogram(painter);
}

void SpectrogramRecordWidget::customPaintTracesEnd(QPainter &painter)
{
    if (_displayEnabled && _drawInFront)
        drawSpectrogram(painter);
}

QRect SpectrogramRecordWidget::spectrogramRect() const
{
    return canvasRect();
}

void SpectrogramRecordWidget::drawSpectrogram(QPainter &painter)
{
    for (SpectrogramItem &item : _items)
        drawItem(painter, item);
}

void SpectrogramRecordWidget::drawItem(QPainter &painter, SpectrogramItem &item)
{
    const QRect canvas = spectrogramRect();
    const RecordSpectrogram<float> &spectrogram = *item.spectrogram;
    const int start = mapTime(spectrogram.startTime());
    const int x1 = mapTime(spectrogram.endTime());
    if (x1 <= canvas.left() || start > canvas.right())
        return;

    const int x0 = std::max(start, canvas.left());
    const int offset = std::max(0, spectrogram.mapTime(leftTime()));
    // A column that is wider than a pixel may begin far before the canvas.
    const double columns =
        (leftTime() - spectrogram.startTime()).length() * spectrogram.columnRate();
    const bool isCut = start < canvas.left() && timeScale() > spectrogram.columnRate();
    const double shift = isCut ? columns - offset : 0;
    const int width = std::min(x1, canvas.right() + 1) - x0;
    if (width < 1 || canvas.height() < 1)
        return;

    // One column a pixel of the screen, however many of them make up one of the widget.
    const QRect area(x0, canvas.top(), width, canvas.height());
    const QSize size = (QSizeF(area.size()) * devicePixelRatioF()).toSize();
    const double scale = timeScale() * devicePixelRatioF();
    if (item.image.size() != size || item.imageOffset != offset || item.imageScale != scale ||
        item.imageShift != shift) {
        // The picture before is one of other times: it must not stand for these.
        if (!generateImageFrom<float>(item.image, item.spectrogram.get(), _colorLUT, size, offset,
                                      shift, scale))
            item.image = QImage();
        item.imageOffset = offset;
        item.imageScale = scale;
        item.imageShift = shift;
    }
    if (!item.image.isNull())
        painter.drawImage(area, item.image);
}

} // namespace Gui
} // namespace Norvu
