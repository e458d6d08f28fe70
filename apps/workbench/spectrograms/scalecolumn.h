// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/roundticks.h>
#include <tellarix/qt/records/ruler.h>

#include <QFont>
#include <QRectF>
#include <QString>
#include <QVector>

#include <functional>

class QPainter;

namespace Workbench {

/** Where a vertical scale stands, in pixels of its widget. */
struct ScaleSpan
{
    double bottom{0};   /**< lower edge of a tick at position 0 */
    double length{0};   /**< from position 0 to position 1, upwards */
    double maximumY{0}; /**< texts stand between 0 and this */
};

/** Ticks, numbers and a title right of something vertical; shows as much as there is room for. */
class ScaleColumn
{
public:
    /** Ticks whose labels are a share of the length apart; see Norvu::Gui::roundTicks(). */
    using TickSource = std::function<QVector<Norvu::Gui::RoundTick>(double minimumDistance)>;

    /**
     * What the scale shows.
     * @param title  reads upwards right of the numbers if it is not longer than the scale
     * @param unit   stands behind the uppermost number otherwise
     */
    void setContent(const TickSource &ticks, const QString &title, const QString &unit);

    /** Room for ticks, numbers and title, whatever the height.
     *  @param leastText  a number for which there is room in any case */
    int preferredWidth(const QFont &font, const QString &leastText) const;

    /** Places ticks and numbers. At least two numbers are shown if two find room, in a smaller font
     *  on a low scale; no two come closer than they can be read. */
    void arrange(const QFont &font, const ScaleSpan &span, int width);

    /** Numbers in their places, from layoutLabels(). */
    const QVector<Tellarix::Gui::RulerLabel> &labels() const { return _labels; }

    /** Paints in the colour of the pen, to the right of @p x.
     *  @param ratio  device pixels per pixel */
    void paint(QPainter &painter, double x, double ratio) const;

private:
    struct Mark
    {
        double position;
        bool isLabelled;
    };

    int placeLabels(double distance);
    void paintTicks(QPainter &painter, double x, double ratio) const;
    void paintLabels(QPainter &painter, double x, double ratio) const;
    void paintTitle(QPainter &painter, double x, double ratio) const;
    double yOf(double position) const;

    TickSource _source;
    QString _title;
    QString _unit;
    QFont _font;
    ScaleSpan _span;
    int _width{0};
    QRectF _digits;
    QVector<Mark> _marks;
    QVector<Tellarix::Gui::RulerLabel> _labels;
};

} // namespace Workbench
