// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "filtercorners.h"

#include <QList>
#include <QObject>
#include <QTimer>

class QAction;

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class FilterBox;
class FrequencyAxis;
class RowFilters;

/**
 * Moves the corners of the filter in a box, by keys from anywhere and on a frequency axis. The text
 * is rewritten at each step, and rows follow as fast as they can be filtered.
 */
class FilterTuning : public QObject
{
    Q_OBJECT

public:
    /** Shows the axis in @p parent as long as nobody lays it out elsewhere. */
    FilterTuning(FilterBox *box, RowFilters *filters, Norvu::Gui::TraceView *view, QWidget *parent);

    FrequencyAxis *axis() const { return _axis; }
    /** Shows the axis. */
    QAction *axisAction() const { return _axisAction; }
    /** Shift the band, and make it narrower and wider. */
    const QList<QAction *> &cornerActions() const { return _cornerActions; }

signals:
    /** The newest text, once rows are through with the one before or a moment has passed. */
    void filterWanted(const QString &text);
    /** The user is through with the axis. */
    void left();

private slots:
    void showAxis(bool show);
    void updateAxis();
    void moveCorner(int corner, double frequency);
    void drawBand(double one, double other);
    void want(const QString &text);
    void forgetWanted();
    void noteProgress(int done, int total);
    void send();

private:
    void addCornerAction(const QString &text, const QString &key,
                         QString (FilterCorners::*change)(double, double) const, double factor);
    FilterCorners corners() const;
    double nyquist() const;
    void adjust(const FilterCorners &before, const QString &text);

    FilterBox *_box;
    RowFilters *_filters;
    FrequencyAxis *_axis;
    QAction *_axisAction;
    QList<QAction *> _cornerActions;
    QString _wanted;
    bool _isWanted{false};
    bool _isFiltering{false};
    QTimer _wait; /**< runs while rows have time for the filter before */
};

} // namespace Workbench
