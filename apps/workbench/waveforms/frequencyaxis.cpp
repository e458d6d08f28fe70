// SPDX-License-Identifier: LGPL-3.0-or-later

#include "frequencyaxis.h"

#include <norvu/gui/roundticks.h>
#include <tellarix/qt/scheme.h>

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace Workbench {

namespace {

constexpr int Margin = 6;
constexpr int TickLength = 4;
constexpr int PlotLines = 2;
constexpr int Reach = 8;
constexpr int CurveStep = 2;
constexpr int CurveAlpha = 60;
constexpr int BeyondAlpha = 40;
constexpr double LowestGain = -48; /**< in dB, at the bottom of the plot */
constexpr double KeyStep = 1.05;
constexpr double LargeKeyStep = 2;
/** A press that moves less than this draws no band. */
constexpr int SmallestBand = 3;

QColor withAlpha(QColor color, int alpha)
{
    color.setAlpha(alpha);
    return color;
}

QString numberText(double frequency)
{
    return QString::number(frequency, 'g', 3);
}

} // namespace

FrequencyAxis::FrequencyAxis(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setAccessibleName(tr("Corner frequencies of the filter"));
}

QSize FrequencyAxis::minimumSizeHint() const
{
    return {20 * fontMetrics().averageCharWidth(),
            (PlotLines + 1) * fontMetrics().height() + TickLength + Margin};
}

QSize FrequencyAxis::sizeHint() const
{
    return minimumSizeHint();
}

void FrequencyAxis::setContent(const FilterCorners &corners, const std::set<double> &rates)
{
    _corners = corners;
    _rates = rates;
    _chosen = std::clamp(_chosen, 0, std::max(0, _corners.frequencies().size() - 1));
    if (!_isDragging)
        updateRange();
    updateCurve();
    update();
}

void FrequencyAxis::updateRange()
{
    _range = shownFrequencies(_corners.frequencies(), _rates);
}

// Places

QRect FrequencyAxis::plot() const
{
    return rect().adjusted(Margin, Margin / 2, -Margin, -fontMetrics().height() - TickLength);
}

double FrequencyAxis::mapFrequency(double frequency) const
{
    const QRect area = plot();
    return area.left() + std::log(frequency / _range.lower) /
                             std::log(_range.upper / _range.lower) * area.width();
}

double FrequencyAxis::unmapFrequency(double x) const
{
    const QRect area = plot();
    return _range.lower *
           std::pow(_range.upper / _range.lower, (x - area.left()) / std::max(1, area.width()));
}

/** The handle that is nearest to a place; -1 if there is none. */
int FrequencyAxis::handleAt(double x) const
{
    const QVector<double> &frequencies = _corners.frequencies();
    const auto distance = [&](double frequency) { return std::abs(mapFrequency(frequency) - x); };
    const auto nearest =
        std::min_element(frequencies.begin(), frequencies.end(),
                         [&](double a, double b) { return distance(a) < distance(b); });
    return nearest == frequencies.end() ? -1 : static_cast<int>(nearest - frequencies.begin());
}

void FrequencyAxis::updateCurve()
{
    const QRect area = plot();
    QVector<double> frequencies;
    for (int x = area.left(); x <= area.right() + CurveStep; x += CurveStep)
        frequencies.append(unmapFrequency(x));
    // Without streams any frequency that is high enough tells the form.
    const double rate = _rates.empty() ? 4 * _range.upper : *_rates.rbegin();
    const QVector<double> gains = filterGains(_corners.text(), rate, frequencies);
    _curve.clear();
    for (int i = 0; i < gains.size(); ++i) {
        const double decibels = 20 * std::log10(std::max(gains[i], 1E-12));
        const double share = std::clamp(decibels / LowestGain, 0.0, 1.0);
        _curve.append(
            {static_cast<double>(area.left() + i * CurveStep), area.top() + share * area.height()});
    }
}

// Painting

void FrequencyAxis::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawNyquist(painter);
    drawTicks(painter);
    drawCurve(painter);
    drawHandles(painter);
    drawHint(painter);
    if (hasFocus()) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void FrequencyAxis::drawTicks(QPainter &painter) const
{
    const QRect area = plot();
    const double distance = fontMetrics().horizontalAdvance("0.0005 Hz") * 1.5;
    painter.setPen(palette().color(QPalette::Text));
    painter.drawLine(area.left(), area.bottom() + 1, area.right(), area.bottom() + 1);
    for (const auto &tick : Norvu::Gui::roundTicks(_range.lower, _range.upper, true,
                                                   distance / std::max(1, area.width()))) {
        const int x = static_cast<int>(std::lround(mapFrequency(tick.value)));
        const int length = tick.isMajor() ? TickLength : TickLength / 2;
        painter.drawLine(x, area.bottom() + 1, x, area.bottom() + length);
        const QString text = tick.isMajor() ? tr("%1 Hz").arg(tick.text) : QString();
        const int width = fontMetrics().horizontalAdvance(text);
        if (x - width / 2 >= 0 && x + width / 2 <= this->width())
            painter.drawText(x - width / 2, area.bottom() + TickLength + fontMetrics().ascent() + 1,
                             text);
    }
}

/** What no stream has is shaded. */
void FrequencyAxis::drawNyquist(QPainter &painter) const
{
    if (_rates.empty())
        return;
    const QRect area = plot();
    const Tellarix::Gui::Scheme &scheme = Tellarix::Gui::Scheme::Current();
    const int beyond = static_cast<int>(mapFrequency(*_rates.rbegin() / 2));
    painter.fillRect(QRect(QPoint(beyond, area.top()), area.bottomRight()),
                     withAlpha(palette().color(QPalette::Text), BeyondAlpha));
    painter.setPen(QPen(scheme.records.cursor, 1, Qt::DashLine));
    const QString name = tr("Nyquist");
    const int width = fontMetrics().horizontalAdvance(name) + 2 * TickLength;
    int taken = area.left();
    for (const double rate : _rates) {
        const int x = static_cast<int>(mapFrequency(rate / 2));
        painter.drawLine(x, area.top(), x, area.bottom());
        if (x - width >= taken)
            painter.drawText(x - width + TickLength, area.bottom() - fontMetrics().descent(), name);
        taken = x;
    }
}

void FrequencyAxis::drawCurve(QPainter &painter) const
{
    if (_curve.isEmpty())
        return;
    const QRect area = plot();
    QPolygonF shape = _curve;
    shape.append(QPointF(_curve.last().x(), area.bottom()));
    shape.prepend(QPointF(_curve.first().x(), area.bottom()));
    painter.save();
    painter.setClipRect(area);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(withAlpha(palette().color(QPalette::Highlight), CurveAlpha));
    painter.drawPolygon(shape);
    painter.restore();
}

void FrequencyAxis::drawHandles(QPainter &painter) const
{
    const QRect area = plot();
    const QVector<double> &frequencies = _corners.frequencies();
    int taken = 0;
    for (int i = 0; i < frequencies.size(); ++i) {
        const bool isChosen = i == _chosen && (hasFocus() || _isDragging);
        const int x = static_cast<int>(std::lround(mapFrequency(frequencies[i])));
        const QColor color = palette().color(isChosen ? QPalette::Highlight : QPalette::Text);
        painter.fillRect(x - 1, area.top(), 2, area.height(), color);
        painter.fillRect(x - 4, area.top(), 8, fontMetrics().height() / 2, color);

        // Beside the handle, outside of the band, or wherever there is room.
        const QString text = tr("%1 Hz").arg(numberText(frequencies[i]));
        const int width = fontMetrics().horizontalAdvance(text);
        const bool isLeft = (i == 0 && frequencies.size() > 1) || x + Reach + width > this->width();
        const int left = std::max(taken, isLeft ? x - Reach - width : x + Reach);
        taken = left + width;
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(left, area.top() + fontMetrics().ascent(), text);
    }
}

void FrequencyAxis::drawHint(QPainter &painter) const
{
    if (!_corners.frequencies().isEmpty())
        return;
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(plot(), Qt::AlignCenter,
                     _corners.isFilter() ? tr("Drag from corner to corner for a band-pass")
                                         : tr("The text is no filter"));
}

// Events

bool FrequencyAxis::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    QToolTip::showText(help->globalPos(), valueText(unmapFrequency(help->x())), this);
    return true;
}

/** "2 Hz, a period of 0.5 s", and what holds there. */
QString FrequencyAxis::valueText(double frequency) const
{
    QString text =
        tr("%1 Hz, a period of %2 s").arg(numberText(frequency), numberText(1 / frequency));
    for (const double rate : _rates) {
        if (std::abs(mapFrequency(rate / 2) - mapFrequency(frequency)) <= Reach)
            text += '\n' + tr("Nyquist frequency of streams at %1 Hz").arg(rate);
    }
    return text;
}

void FrequencyAxis::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateCurve();
}

void FrequencyAxis::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    updateCurve();
}

void FrequencyAxis::keyPressEvent(QKeyEvent *event)
{
    const bool isLarge = event->modifiers().testFlag(Qt::ShiftModifier);
    const double step = isLarge ? LargeKeyStep : KeyStep;
    switch (event->key()) {
    case Qt::Key_Left:
        moveChosen(1 / step);
        break;
    case Qt::Key_Right:
        moveChosen(step);
        break;
    case Qt::Key_Escape:
        emit left();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void FrequencyAxis::moveChosen(double factor)
{
    if (_chosen < _corners.frequencies().size())
        emit cornerMoved(_chosen, _corners.frequencies()[_chosen] * factor);
}

/** From handle to handle, and then on. */
bool FrequencyAxis::focusNextPrevChild(bool next)
{
    const int neighbour = _chosen + (next ? 1 : -1);
    if (neighbour < 0 || neighbour >= _corners.frequencies().size())
        return QWidget::focusNextPrevChild(next);
    _chosen = neighbour;
    update();
    return true;
}

/** A handle that is met stays under the pointer, another place gets the nearest one. */
void FrequencyAxis::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !_corners.isFilter())
        return;
    _isDragging = true;
    _hasMoved = false;
    _pressX = event->x();
    _grip = 0;
    const int handle = handleAt(event->x());
    if (handle < 0)
        return;
    _chosen = handle;
    const double distance = mapFrequency(_corners.frequencies()[handle]) - event->x();
    if (std::abs(distance) <= Reach)
        _grip = distance;
    else
        emit cornerMoved(_chosen, unmapFrequency(event->x()));
    update();
}

void FrequencyAxis::mouseMoveEvent(QMouseEvent *event)
{
    const QRect area = plot();
    const double x = std::clamp<double>(event->x() + _grip, area.left(), area.right());
    if (!_isDragging) {
        updateCursor(event->x());
    } else if (!_corners.frequencies().isEmpty()) {
        // A click alone must not round the corner.
        _hasMoved = _hasMoved || event->x() != _pressX;
        if (_hasMoved)
            emit cornerMoved(_chosen, unmapFrequency(x));
    } else if (std::abs(x - _pressX) >= SmallestBand) {
        _chosen = x > _pressX ? 1 : 0;
        emit bandDrawn(unmapFrequency(_pressX), unmapFrequency(x));
    }
}

void FrequencyAxis::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !_isDragging)
        return;
    _isDragging = false;
    updateRange();
    updateCurve();
    updateCursor(event->x());
    update();
}

void FrequencyAxis::updateCursor(double x)
{
    const int handle = handleAt(x);
    const bool isMet =
        handle >= 0 && std::abs(mapFrequency(_corners.frequencies()[handle]) - x) <= Reach;
    isMet ? setCursor(Qt::SplitHCursor) : unsetCursor();
}

} // namespace Workbench
