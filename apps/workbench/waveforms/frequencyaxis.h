// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "filtercorners.h"

#include <QPolygonF>
#include <QWidget>

#include <set>

namespace Workbench {

/**
 * A logarithmic axis of frequencies with a handle for each corner of a filter, the gain of the
 * filter as a pale curve, and the Nyquist frequencies of the streams.
 *
 * It tells where the user wants a corner, by mouse or keys, and shows what it is given.
 */
class FrequencyAxis : public QWidget
{
    Q_OBJECT

public:
    explicit FrequencyAxis(QWidget *parent = nullptr);

    /** What is shown; the range stays while a handle is dragged. */
    void setContent(const FilterCorners &corners, const std::set<double> &rates);
    const FrequencyRange &range() const { return _range; }
    /** The handle that keys move. */
    int chosenHandle() const { return _chosen; }

    /** Pixel of a frequency in Hz, and its inverse. */
    double mapFrequency(double frequency) const;
    double unmapFrequency(double x) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /** A corner is wanted elsewhere. */
    void cornerMoved(int corner, double frequency);
    /** A band is wanted where there are no corners. */
    void bandDrawn(double one, double other);
    /** Esc was pressed. */
    void left();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    QRect plot() const;
    int handleAt(double x) const;
    void updateRange();
    void updateCurve();
    void updateCursor(double x);
    void moveChosen(double factor);
    QString valueText(double frequency) const;
    void drawCurve(QPainter &painter) const;
    void drawTicks(QPainter &painter) const;
    void drawNyquist(QPainter &painter) const;
    void drawHandles(QPainter &painter) const;
    void drawHint(QPainter &painter) const;

    FilterCorners _corners;
    std::set<double> _rates;
    FrequencyRange _range;
    QPolygonF _curve;
    int _chosen{0};
    bool _isDragging{false};
    bool _hasMoved{false};
    double _pressX{0};
    double _grip{0}; /**< pixels from the pointer to the handle that it drags */
};

} // namespace Workbench
