// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/overlay.h>

#include <QPair>
#include <QRect>
#include <QString>
#include <QVector>

namespace Workbench {

/** What a measurement looks like; all positions are those of the overlay. */
struct MeasuringMarks
{
    QRect area;           /**< where lines and band may be drawn; an empty one draws nothing */
    QRect row;            /**< the measured row, whose band is stronger */
    bool isTurned{false}; /**< time runs down */
    int anchor{0};        /**< where the lines are along the time axis */
    int end{0};           /**< the panel stands beside it */
    int pointer{0};       /**< place of the panel along the lines */
    QString title;        /**< heading of the panel */
    QString warning;      /**< last line of the panel, if there is any */
    QVector<QPair<QString, QString>> entries; /**< lines of the panel: names and values */

    bool isEmpty() const { return area.isEmpty(); }
    /** From one line to the other, both included. */
    QRect band() const { return bandBetween(anchor, end); }
    /** Across the whole area, from one place along the time axis to another. */
    QRect bandBetween(int from, int to) const;
};

/**
 * Upper left corner of a panel beside a point: below and right of it, or on the other side where
 * there is no room; moved into @p area as far as it fits.
 */
QPoint panelPosition(const QSize &panel, const QPoint &point, const QRect &area, int distance);

/** Two cursor lines with a band between them and a panel of values, above rows of traces. */
class MeasuringOverlay : public Norvu::Gui::Overlay
{
    Q_OBJECT

public:
    explicit MeasuringOverlay(QWidget *parent);

    /** Repaints only what differs from the marks before. */
    void setMarks(const MeasuringMarks &marks);
    const MeasuringMarks &marks() const { return _marks; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QFont titleFont() const;
    QSize panelSize() const;
    QRect panelRect() const;
    QRegion lines() const;
    void drawBand(QPainter &painter) const;
    void drawPanel(QPainter &painter) const;

    MeasuringMarks _marks;
};

} // namespace Workbench
