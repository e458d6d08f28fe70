// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "norvu/ink.h"

#include <tellarix/core/math/filter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QPaintEvent>
#include <QtTest>

#include <memory>
#include <vector>

namespace Tellarix {

using Samples = std::vector<double>;

inline Core::Time at(double seconds)
{
    return Core::Time(2024, 1, 5) + Core::TimeSpan(seconds);
}

inline Core::TimeWindow window(double start, double end)
{
    return Core::TimeWindow(at(start), at(end));
}

inline RecordPtr record(double start, const Samples &samples, double rate = 1)
{
    static const StreamCodesCPtr codes(new StreamCodes("XX", "TEST", "00", "BHZ"));
    const int count = static_cast<int>(samples.size());
    return new Record(codes, at(start), rate, new DoubleArray(count, samples.data()));
}

/** @p count samples that go up and down between @p lower and @p upper. */
inline Samples zigzag(int count, double lower, double upper)
{
    Samples samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(i % 2 ? upper : lower);
    return samples;
}

inline std::unique_ptr<RingBuffer> sequence(const std::vector<RecordPtr> &records, int capacity = 0)
{
    auto result = std::make_unique<RingBuffer>(capacity);
    for (const RecordPtr &item : records)
        result->feed(item.get());
    return result;
}

/** Running sum: each sample depends on all before it, so lost state shows at once. */
class Integrator : public Math::Filtering::InPlaceFilter<double>
{
public:
    void setSamplingFrequency(double) override { _sum = 0; }
    int setParameters(int, const double *) override { return 0; }
    void apply(int n, double *samples) override
    {
        for (int i = 0; i < n; ++i)
            samples[i] = _sum += samples[i];
    }
    InPlaceFilter<double> *clone() const override { return new Integrator; }

private:
    double _sum{0};
};

/** All samples of a sequence, record behind record. */
inline Samples samplesOf(const RecordSequence *sequence)
{
    Samples result;
    for (int i = 0; sequence != nullptr && i < sequence->size(); ++i) {
        for (int k = 0; k < sequence->at(i)->sampleCount(); ++k)
            result.push_back(sequence->at(i)->data()->value(k));
    }
    return result;
}

inline QImage picture(QWidget &widget)
{
    return Ink::picture(widget, QWidget::DrawChildren);
}

/** The smallest rectangle that holds all pixels of a colour. */
inline QRect inkRect(const QImage &image, const QColor &color)
{
    return Ink::rectOfColor(image, color);
}

/** A widget of 200 x 100 pixels whose canvas shows 100 s from at(0), slot 0 drawn in red. */
class TestWidget : public Gui::RecordWidget
{
public:
    TestWidget()
    {
        resize(200, 100);
        setAlignment(at(0));
        setTimeScale(2);
        setTimeRange(0, 100);
        setRecordPen(0, QPen(Qt::red, 1));
    }

    void install(const std::vector<RecordPtr> &records, int slot = 0)
    {
        setRecords(slot, sequence(records).release());
    }

    void feed(const RecordPtr &record, int slot = 0)
    {
        records(slot)->feed(record.get());
        fed(slot, record.get());
    }

    int paintCount{0};

    /** What was painted since the last call. */
    QRegion takePainted() { return std::exchange(_painted, QRegion()); }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        _painted += event->region();
        ++paintCount;
        RecordWidget::paintEvent(event);
    }

private:
    QRegion _painted;
};

} // namespace Tellarix
