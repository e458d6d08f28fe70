#include <norvu/gui/spectrogramrecordwidget.h>

#include <norvu/gui/spectrogramimage.h>

#include <tellarix/core/records/recordsequence.h>

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

using Tellarix::Core::TimeSpan;

namespace Norvu {
namespace Gui {

namespace {

/** Half a sample in seconds: up to there, times count as equal. */
double toleranceOf(double samplingFrequency)
{
    return 0.5 / samplingFrequency;
}

/** The end of a stretch, which the next record overlaps, continues or leaves behind. */
struct StretchEnd
{
    Tellarix::Core::Time time;
    double samplingFrequency;

    double gapTo(const Tellarix::Record &record) const
    {
        return (record.startTime() - time).length();
    }
    bool overlaps(const Tellarix::Record &record) const
    {
        return gapTo(record) < -toleranceOf(samplingFrequency);
    }
    bool continuesWith(const Tellarix::Record &record) const
    {
        return gapTo(record) <= toleranceOf(samplingFrequency) &&
               record.samplingFrequency() == samplingFrequency;
    }
};

StretchEnd endOf(const RecordSpectrogram<float> &spectrogram)
{
    return {spectrogram.endTime(), spectrogram.samplingFrequency()};
}

} // namespace

SpectrogramRecordWidget::SpectrogramRecordWidget(QWidget *parent)
    : SpectrogramRecordWidget(Tellarix::DataModel::WaveformStreamID(), parent)
{}

SpectrogramRecordWidget::SpectrogramRecordWidget(
    const Tellarix::DataModel::WaveformStreamID &streamID, QWidget *parent)
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

Tellarix::RecordSequence *SpectrogramRecordWidget::spectrogramRecords(int slot) const
{
    return _useFilteredRecords ? filteredRecords(slot) : records(slot);
}

void SpectrogramRecordWidget::recordsChanged()
{
    changedRecords(_slot, spectrogramRecords(_slot));
}

void SpectrogramRecordWidget::changedRecords(int slot, Tellarix::RecordSequence *)
{
    if (!_enabled || slot != _slot)
        return;

    // What is given is what the traces show, which may be filtered when the raw records are wanted.
    _items.clear();
    if (const Tellarix::RecordSequence *sequence = spectrogramRecords(slot))
        feedAll(*sequence);
    update();
}

/** As feedSpectrogram() of each record, but a stretch at once, which is faster. */
void SpectrogramRecordWidget::feedAll(const Tellarix::RecordSequence &sequence)
{
    std::vector<const Tellarix::Record *> stretch;
    for (const Tellarix::RecordCPtr &record : sequence) {
        if (!record->hasEndTime())
            continue;
        if (!stretch.empty()) {
            const StretchEnd end{stretch.back()->endTime(), stretch.front()->samplingFrequency()};
            if (end.overlaps(*record))
                continue;
            if (!end.continuesWith(*record)) {
                feedItem(stretch, true);
                stretch.clear();
            }
        }
        stretch.push_back(record.get());
    }
    if (!stretch.empty())
        feedItem(stretch, true);
    trimItems(sequence.timeWindow());
}

void SpectrogramRecordWidget::fed(int slot, const Tellarix::Record *record)
{
    Tellarix::Gui::RecordWidget::fed(slot, record);
    if (!_enabled || slot != _slot)
        return;
    const Tellarix::RecordSequence *sequence = spectrogramRecords(slot);
    if (!sequence)
        return;

    // While filtering is on the sequence holds a copy of the record, or several that were waiting.
    int index = 0;
    if (!_items.empty()) {
        const RecordSpectrogram<float> &last = *_items.back().spectrogram;
        index = sequence->firstStartingFrom(last.endTime() -
                                            TimeSpan(toleranceOf(last.samplingFrequency())));
    }
    for (; index < sequence->size(); ++index)
        feedSpectrogram(slot, sequence->at(index));
}

void SpectrogramRecordWidget::feedSpectrogram(int slot, const Tellarix::Record *record)
{
    const Tellarix::RecordSequence *sequence = spectrogramRecords(slot);
    if (!sequence || !record || !record->hasEndTime())
        return;

    bool isNew = true;
    if (!_items.empty()) {
        const StretchEnd end = endOf(*_items.back().spectrogram);
        if (end.overlaps(*record))
            return;
        isNew = !end.continuesWith(*record);
    }
    feedItem({record}, isNew);
    trimItems(sequence->timeWindow());
}

/** Feeds records to the last item, or to a new one. */
void SpectrogramRecordWidget::feedItem(const std::vector<const Tellarix::Record *> &records,
                                       bool isNew)
{
    const bool isFirst = _items.empty();
    if (isNew)
        _items.push_back({new RecordSpectrogram<float>(_settings), QImage(), -1, 0});
    SpectrogramItem &item = _items.back();
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

void SpectrogramRecordWidget::trimItems(const Tellarix::Core::TimeWindow &window)
{
    if (_items.empty() || !(window.startTime() > _items.front().spectrogram->startTime()))
        return;

    bool removed = false;
    while (!_items.empty()) {
        SpectrogramItem &item = _items.front();
        RecordSpectrogram<float> &spectrogram = *item.spectrogram;
        const Tellarix::Core::Time start = spectrogram.startTime();
        // Rounding must not take the last column, behind which the next record goes on.
        spectrogram.trim(window.startTime(),
                         window.endTime() + TimeSpan(toleranceOf(spectrogram.samplingFrequency())));
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

void SpectrogramRecordWidget::drawSpectrogram(QPainter &painter)
{
    for (SpectrogramItem &item : _items)
        drawItem(painter, item);
}

void SpectrogramRecordWidget::drawItem(QPainter &painter, SpectrogramItem &item)
{
    const QRect canvas = canvasRect();
    const RecordSpectrogram<float> &spectrogram = *item.spectrogram;
    int x0 = mapTime(spectrogram.startTime());
    const int x1 = mapTime(spectrogram.endTime());
    if (x1 <= canvas.left() || x0 > canvas.right())
        return;

    const int offset = std::max(0, spectrogram.mapTime(leftTime()));
    if (offset > 0) {
        // The first column may begin before the canvas, by many pixels at a large scale.
        const double before = (leftTime() - spectrogram.startTime()).length() -
                              offset / spectrogram.samplingFrequency();
        x0 = canvas.left() - static_cast<int>(std::lround(before * timeScale()));
    }
    const int width = std::min(x1, canvas.right() + 1) - x0;
    if (width < 1 || canvas.height() < 1)
        return;

    const QSize size(width, canvas.height());
    if (item.image.size() != size || item.imageOffset != offset || item.imageScale != timeScale()) {
        if (!generateImagePPS<float>(item.image, item.spectrogram.get(), _colorLUT, size.width(),
                                     size.height(), offset, timeScale()))
            item.image = QImage();
        item.imageOffset = offset;
        item.imageScale = timeScale();
    }
    if (!item.image.isNull())
        painter.drawImage(x0, canvas.top(), item.image);
}

} // namespace Gui
} // namespace Norvu
