// SPDX-License-Identifier: LGPL-3.0-or-later

#include "magnitudetimepanel.h"

#include "bvalue.h"

#include <norvu-workbench/bench/bench.h>
#include <norvu-workbench/bench/selection.h>
#include <norvu-workbench/bench/shownevents.h>

#include <norvu/gui/roundticks.h>
#include <tellarix/qt/records/timescale.h>

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

using Workbench::EventFacts;

namespace {

constexpr int PointSize = 5;
constexpr int ChosenSize = 9;
constexpr int LargestDistance = 8; /**< in pixels, from a click to the event that is meant */

QString textOf(const QVector<EventFacts> &events)
{
    QVector<double> magnitudes;
    for (const EventFacts &event : events)
        magnitudes.append(*event.magnitude);
    const QString count = MagnitudeTimePanel::tr("Events: %1").arg(magnitudes.size());
    const std::optional<BValue> value = bValue(magnitudes);
    if (!value)
        return MagnitudeTimePanel::tr("%1, too few for a b-value").arg(count);
    return MagnitudeTimePanel::tr("%1    b = %2 ± %3 from %4 events of M %5 and above")
        .arg(count)
        .arg(value->b, 0, 'f', 2)
        .arg(value->error, 0, 'f', 2)
        .arg(value->count)
        .arg(value->completeness, 0, 'f', 1);
}

} // namespace

MagnitudeTimePlot::MagnitudeTimePlot(QWidget *parent)
    : QWidget(parent), _scale(new Tellarix::Gui::TimeScale(this))
{
    _scale->setAbsoluteTimeEnabled(true);
    _scale->setInteractive(false);
}

void MagnitudeTimePlot::setEvents(const QVector<EventFacts> &events)
{
    _events.clear();
    for (const EventFacts &event : events) {
        if (event.originTime.valid() && event.magnitude && std::isfinite(*event.magnitude))
            _events.append(event);
    }
    if (!_events.isEmpty()) {
        const auto isWeaker = [](const EventFacts &a, const EventFacts &b) {
            return *a.magnitude < *b.magnitude;
        };
        const auto [low, high] = std::minmax_element(_events.cbegin(), _events.cend(), isWeaker);
        _lowest = std::floor(*low->magnitude);
        _highest = std::max(std::ceil(*high->magnitude), _lowest + 1);
        _seconds = std::max((_events.last().originTime - _events.first().originTime).length(), 1.0);
        _scale->setAlignment(_events.first().originTime);
    }
    placeScale();
    update();
}

void MagnitudeTimePlot::setChosen(const QString &publicID)
{
    _chosen = publicID;
    update();
}

QSize MagnitudeTimePlot::sizeHint() const
{
    return QSize(80, 20) * fontMetrics().averageCharWidth();
}

QRect MagnitudeTimePlot::plotRect() const
{
    const int margin = fontMetrics().horizontalAdvance(QStringLiteral("-9.9 "));
    return rect().adjusted(margin, ChosenSize, -ChosenSize, -_scale->sizeHint().height());
}

QPointF MagnitudeTimePlot::positionOf(const EventFacts &event) const
{
    const QRectF area = plotRect();
    const double seconds = (event.originTime - _events.first().originTime).length();
    return {area.left() + seconds / _seconds * area.width(),
            area.bottom() - (*event.magnitude - _lowest) / (_highest - _lowest) * area.height()};
}

void MagnitudeTimePlot::placeScale()
{
    const QRect area = plotRect();
    _scale->setGeometry(area.left(), area.bottom() + 1, area.width(), height() - area.bottom() - 1);
    _scale->setVisible(!_events.isEmpty());
    _scale->setScale(area.width() / _seconds);
    _scale->setRange(0, _seconds);
}

void MagnitudeTimePlot::mousePressEvent(QMouseEvent *event)
{
    const EventFacts *nearest = nullptr;
    double least = LargestDistance;
    for (const EventFacts &candidate : std::as_const(_events)) {
        const double distance = QLineF(positionOf(candidate), event->localPos()).length();
        if (distance <= least) {
            least = distance;
            nearest = &candidate;
        }
    }
    // A copy: who is told may set other events.
    if (nearest)
        emit eventClicked(EventFacts(*nearest));
}

void MagnitudeTimePlot::resizeEvent(QResizeEvent *)
{
    placeScale();
}

void MagnitudeTimePlot::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (_events.isEmpty()) {
        painter.drawText(rect(), Qt::AlignCenter, tr("The list shows no events with magnitudes."));
        return;
    }
    drawGrid(painter);
    drawEvents(painter);
}

void MagnitudeTimePlot::drawGrid(QPainter &painter) const
{
    const QRect area = plotRect();
    const double distance = 2.0 * fontMetrics().height() / std::max(area.height(), 1);
    for (const Norvu::Gui::RoundTick &tick :
         Norvu::Gui::roundTicks(_lowest, _highest, false, std::max(distance, 0.001))) {
        if (!tick.isMajor())
            continue;
        const int y = qRound(area.bottom() - tick.position * area.height());
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(area.left(), y, area.right(), y);
        painter.setPen(palette().color(QPalette::WindowText));
        const int half = fontMetrics().height() / 2;
        painter.drawText(QRect(0, y - half, area.left() - half / 2, 2 * half),
                         Qt::AlignRight | Qt::AlignVCenter, tick.text);
    }
}

void MagnitudeTimePlot::drawEvents(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QColor color = palette().color(QPalette::WindowText);
    color.setAlpha(140);
    painter.setBrush(color);
    const EventFacts *chosen = nullptr;
    for (const EventFacts &event : _events) {
        painter.drawEllipse(positionOf(event), PointSize / 2.0, PointSize / 2.0);
        if (event.publicID == _chosen)
            chosen = &event;
    }
    if (!chosen)
        return;
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawEllipse(positionOf(*chosen), ChosenSize / 2.0, ChosenSize / 2.0);
}

MagnitudeTimePanel::MagnitudeTimePanel(Workbench::Bench *bench)
    : Panel(bench, {"magnitudetime", tr("Magnitude over time"), tr("&Magnitude over time"),
                    QKeySequence(), QIcon(), Workbench::PanelPlace::Bottom, true}),
      _text(new QLabel), _plot(new MagnitudeTimePlot)
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(_text);
    layout->addWidget(_plot, 1);
    connect(bench->shownEvents(), SIGNAL(changed()), this, SLOT(showEvents()));
    connect(bench->selection(), SIGNAL(eventChanged()), this, SLOT(showChosen()));
    connect(_plot, SIGNAL(eventClicked(Workbench::EventFacts)), bench->selection(),
            SLOT(showEvent(Workbench::EventFacts)));
    showEvents();
    showChosen();
}

void MagnitudeTimePanel::showEvents()
{
    _plot->setEvents(bench()->shownEvents()->all());
    _text->setText(textOf(_plot->events()));
}

void MagnitudeTimePanel::showChosen()
{
    const auto &chosen = bench()->selection()->chosenEvent();
    _plot->setChosen(chosen ? chosen->publicID : QString());
}
