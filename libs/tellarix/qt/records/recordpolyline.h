// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/baseobject.h>
#include <tellarix/core/records/forward.h>
#include <tellarix/core/time.h>
#include <tellarix/qt/api.h>

#include <QPolygon>
#include <QPolygonF>
#include <QVector>

#include <memory>

class QPainter;

namespace Tellarix {
namespace Gui {

struct TraceInk;

/** A drawn trace: polygons in pixels, one for each stretch without a gap, times ascending. */
class TELLARIX_GUI_API AbstractRecordPolyline : public Core::BaseObject
{
public:
    ~AbstractRecordPolyline() override;

    virtual bool isEmpty() const = 0;
    /**
     * Draws the trace with the painter's pen. Where columns hold more than one value a vertical
     * bar stands for the zigzag between them: the same ink for a fraction of the time. Bars are
     * not antialiased. The points may have been turned by 90 degrees, so that y ascends in time.
     */
    virtual void draw(QPainter &painter) = 0;
    /** Moves all points. */
    virtual void translate(const QPointF &offset) = 0;
    /**
     * Works out beforehand, and in another thread if need be, what draw() needs. Until create() or
     * translate() are called, draw() then shows the points as they are now.
     */
    virtual void prepareDrawing() = 0;
};

/**
 * A trace in whole pixels.
 *
 * create() fills the object with the samples from @p start to @p end at @p pixelsPerSecond, x = 0
 * at @p start. Of each sample @p amplOffset is subtracted; then @p amplMin is drawn at
 * y = @p height - 1 and @p amplMax at y = 0, also where @p amplMin is the larger one. Values
 * outside leave that range. A gap of more than
 * half a sample between records begins a new polygon, and so does a sample that is not finite or a
 * record that starts before the samples before it end.
 * The point before and the point behind the window are part of the trace, so that lines reach the
 * edges; x stays within one pixel beside the area where the true point lies far away.
 *
 * @param minimumResult, maximumResult  if given, set to the smallest and largest sample found,
 *                                      before the offset
 * @param optimize  at two samples a pixel and more, a column keeps its first, smallest, largest
 *                  and last value instead of all samples
 * With @p amplMin equal to @p amplMax, as of a constant trace, all values are drawn at half height.
 * A null or empty sequence, a range that is not finite, an empty window, a scale that is not
 * above 0 and a height below 1 give no polygons; the results are then left alone, as they are if
 * no sample is found.
 */
class TELLARIX_GUI_API RecordPolyline : public AbstractRecordPolyline, public QVector<QPolygon>
{
public:
    void create(const RecordSequence *sequence, const Core::Time &start, const Core::Time &end,
                double pixelsPerSecond, double amplMin, double amplMax, double amplOffset,
                int height, double *minimumResult = nullptr, double *maximumResult = nullptr,
                bool optimize = true);

    bool isEmpty() const override { return QVector<QPolygon>::isEmpty(); }
    void draw(QPainter &painter) override;
    void translate(const QPointF &offset) override;
    void prepareDrawing() override;

private:
    std::shared_ptr<const TraceInk> _ink;
};

/** A trace with subpixel coordinates; otherwise like RecordPolyline. */
class TELLARIX_GUI_API RecordPolylineF : public AbstractRecordPolyline, public QVector<QPolygonF>
{
public:
    void create(const RecordSequence *sequence, const Core::Time &start, const Core::Time &end,
                double pixelsPerSecond, double amplMin, double amplMax, double amplOffset,
                int height, double *minimumResult = nullptr, double *maximumResult = nullptr,
                bool optimize = true);

    bool isEmpty() const override { return QVector<QPolygonF>::isEmpty(); }
    void draw(QPainter &painter) override;
    void translate(const QPointF &offset) override;
    void prepareDrawing() override;

private:
    std::shared_ptr<const TraceInk> _ink;
};

using RecordPolylinePtr = Core::SmartPointer<AbstractRecordPolyline>;

} // namespace Gui
} // namespace Tellarix
