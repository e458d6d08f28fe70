// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/records/ruler.h>

#include <QString>

namespace Workbench {

/** A scale of distances with their unit: growing downwards at the left of what it measures, or to
 * the right below it. */
class DistanceAxis : public Tellarix::Gui::Ruler
{
    Q_OBJECT

public:
    explicit DistanceAxis(QWidget *parent);

    void setUnit(const QString &unit);
    /** Spans distances over the length of the axis. */
    void setDistances(double nearest, double farthest);

    QSize sizeHint() const override;

protected:
    /** There are no distances below 0, which the start of the axis may be. */
    bool getTickText(double value, double nextValue, int line, QString &text) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString _unit;
};

} // namespace Workbench
