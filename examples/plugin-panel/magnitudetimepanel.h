// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu-workbench/bench/eventfacts.h>
#include <norvu-workbench/bench/panel.h>

#include <QVector>

class QLabel;

namespace Tellarix {
namespace Gui {
class TimeScale;
} // namespace Gui
} // namespace Tellarix

/** The events of the list as points: time to the right, magnitude upwards. */
class MagnitudeTimePlot : public QWidget
{
    Q_OBJECT

public:
    explicit MagnitudeTimePlot(QWidget *parent = nullptr);

    /** Shows the events that have a time and a magnitude. */
    void setEvents(const QVector<Workbench::EventFacts> &events);
    void setChosen(const QString &publicID);
    /** What is shown, in ascending order of time. */
    const QVector<Workbench::EventFacts> &events() const { return _events; }

    QSize sizeHint() const override;

signals:
    void eventClicked(const Workbench::EventFacts &event);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QRect plotRect() const;
    QPointF positionOf(const Workbench::EventFacts &event) const;
    void drawGrid(QPainter &painter) const;
    void drawEvents(QPainter &painter) const;
    void placeScale();

    Tellarix::Gui::TimeScale *_scale;
    QVector<Workbench::EventFacts> _events;
    QString _chosen;
    double _seconds{1}; /**< from the first event to the last one */
    double _lowest{0};
    double _highest{1};
};

/** Magnitude over time, and the b-value of what the list shows. */
class MagnitudeTimePanel : public Workbench::Panel
{
    Q_OBJECT

public:
    explicit MagnitudeTimePanel(Workbench::Bench *bench);

private slots:
    void showEvents();
    void showChosen();

private:
    QLabel *_text;
    MagnitudeTimePlot *_plot;
};
