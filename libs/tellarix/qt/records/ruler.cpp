// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/ruler.h>

#include <tellarix/qt/scheme.h>

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>
#include <QPointer>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tellarix {
namespace Gui {

namespace {

constexpr int MaximumTicks = 4096;
constexpr double LeastMinorPixels = 4;
constexpr double RelativeRounding = 1E-9;

bool isPositive(double value)
{
    return std::isfinite(value) && value > 0;
}

/** Value of @p digit times ten to @p exponent, rounded once. */
double decimal(double digit, int exponent)
{
    return exponent < 0 ? digit / std::pow(10.0, -exponent) : digit * std::pow(10.0, exponent);
}

double minorOf(double major)
{
    // A 2 is divided into quarters, 1 and 5 into fifths.
    const double exponent = std::floor(std::log10(major * (1 + RelativeRounding)));
    const bool isTwo = std::round(major / std::pow(10.0, exponent)) == 2;
    return major / (isTwo ? 4 : 5);
}

QString numberText(double value, double spacing)
{
    if (spacing <= 0)
        return QString::number(value, 'g', 6);
    if (std::abs(value) < 0.01 * spacing)
        return QStringLiteral("0");

    const int decimals = std::max(0, qCeil(-std::log10(spacing) - RelativeRounding));
    if (std::abs(value) < 1E7 && decimals <= 6)
        return QString::number(value, 'f', decimals);
    const int digits = qCeil(std::log10(std::abs(value) / spacing)) + 1;
    return QString::number(value, 'g', qBound(1, digits, 15));
}

bool overlapsAny(const RulerLabel &label, const QVector<RulerLabel> &others, double gap)
{
    return std::any_of(others.begin(), others.end(), [&](const RulerLabel &other) {
        return label.start < other.start + other.extent + gap &&
               other.start < label.start + label.extent + gap;
    });
}

} // namespace

double roundTickDistance(double distance)
{
    if (!isPositive(distance) || distance < 1E-300)
        return 0;

    const int exponent = static_cast<int>(std::floor(std::log10(distance)));
    for (int i = 0; i < 5; ++i) {
        constexpr double Digits[] = {1, 2, 5};
        const double candidate = decimal(Digits[i % 3], exponent + i / 3);
        if (candidate >= distance * (1 - RelativeRounding))
            return std::isfinite(candidate) ? candidate : 0;
    }
    return 0;
}

QVector<double> tickValues(double lower, double upper, double spacing, double offset)
{
    if (!std::isfinite(lower) || !std::isfinite(upper) || !std::isfinite(offset) ||
        !isPositive(spacing) || upper < lower)
        return {};

    constexpr double Slack = 1E-6;
    constexpr double LargestIndex = 9E15;
    const double first = std::ceil((lower + offset) / spacing - Slack);
    const double last = std::floor((upper + offset) / spacing + Slack);
    if (!(std::abs(first) < LargestIndex) || !(std::abs(last) < LargestIndex) ||
        last - first >= MaximumTicks || lower + spacing == lower)
        return {};

    QVector<double> values;
    values.reserve(std::max(0, static_cast<int>(last - first) + 1));
    const auto end = static_cast<int64_t>(last);
    for (auto i = static_cast<int64_t>(first); i <= end; ++i)
        values.append(static_cast<double>(i) * spacing - offset);
    return values;
}

QVector<RulerLabel> layoutLabels(const QVector<RulerLabel> &labels, double length, double gap)
{
    QVector<RulerLabel> placed;
    for (const bool moved : {false, true}) {
        for (RulerLabel label : labels) {
            const double wanted = label.position - 0.5 * label.extent;
            const bool fits = wanted >= 0 && wanted + label.extent <= length;
            if (fits == moved || label.extent > length)
                continue;
            label.start = qBound(0.0, wanted, length - label.extent);
            if (!overlapsAny(label, placed, gap))
                placed.append(label);
        }
    }
    return placed;
}

Ruler::Ruler(QWidget *parent, Qt::WindowFlags flags, Position position)
    : QWidget(parent, flags), _position(position)
{
    setPosition(position);
    setMouseTracking(true);
    updateCursor();
}

Ruler::~Ruler() = default;

void Ruler::setPosition(Position position)
{
    _position = position;
    setSizePolicy(isVertical() ? QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding)
                               : QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed));
    updateGeometry();
    update();
    const QPointer<Ruler> alive(this);
    applyRange(_lower, _upper, _scale);
    if (alive)
        updateSpacing();
}

void Ruler::setAutoScaleEnabled(bool enable)
{
    if (enable == _autoScale)
        return;
    _autoScale = enable;
    applyRange(_lower, _upper, _scale);
}

void Ruler::setRangeLimits(double narrowest, double widest)
{
    if (!isPositive(narrowest) || !isPositive(widest) || narrowest > widest)
        return;
    _narrowest = narrowest;
    _widest = widest;
    if (!_autoScale)
        showRange(_lower, _upper);
}

void Ruler::setRangeSelectionEnabled(bool enable, bool handles)
{
    _rangeSelection = enable;
    _selectionHandles = enable && handles;
    if (!enable)
        setSelection(0, 0);
    update();
}

void Ruler::setInteractive(bool enable)
{
    _interactive = enable;
    updateCursor();
}

double Ruler::valueToPixel(double value) const
{
    const double distance = (value - _lower) * _scale * direction();
    return isVertical() ? rulerLength() - distance : distance;
}

double Ruler::pixelToValue(double pixel) const
{
    return _lower + direction() * (isVertical() ? rulerLength() - pixel : pixel) / _scale;
}

bool Ruler::setScale(double pixelsPerUnit)
{
    if (_autoScale || !isPositive(pixelsPerUnit))
        return false;

    const double length = rulerLength();
    const double scale = length > 0 ? length / limitedWidth(length / pixelsPerUnit) : pixelsPerUnit;
    const bool isOther = scale != _scale;
    applyRange(_lower, _lower + length / scale, scale);
    return isOther;
}

bool Ruler::setRange(double lower, double upper)
{
    if (!std::isfinite(lower) || !std::isfinite(upper) || !std::isfinite(upper - lower))
        return false;
    limitRange(lower, upper);
    return applyRange(lower, upper, _scale);
}

bool Ruler::showRange(double lower, double upper)
{
    if (!std::isfinite(lower) || !std::isfinite(upper) || !isPositive(upper - lower))
        return false;
    limitRange(lower, upper);
    const double scale = rulerLength() / (upper - lower);
    return applyRange(lower, upper, isPositive(scale) ? scale : _scale);
}

void Ruler::setOffset(double offset)
{
    if (std::isfinite(offset))
        applySpacing(_majorSpacing, _minorSpacing, offset);
}

void Ruler::setSelection(double lower, double upper)
{
    const bool isEmpty = !std::isfinite(lower) || !std::isfinite(upper) || upper <= lower;
    _selectionLower = isEmpty ? 0 : lower;
    _selectionUpper = isEmpty ? 0 : upper;
    if (isEmpty)
        setHovered(Handle::None);
    update();
}

double Ruler::limitedWidth(double width) const
{
    return _autoScale ? width : qBound(_narrowest, width, _widest);
}

void Ruler::limitRange(double &lower, double &upper) const
{
    const double width = upper - lower;
    if (_autoScale || width <= 0 || limitedWidth(width) == width)
        return;
    const double centre = lower + 0.5 * width;
    lower = centre - 0.5 * limitedWidth(width);
    upper = lower + limitedWidth(width);
}

/** Takes a range and brings scale, length and upper end into agreement. */
bool Ruler::applyRange(double lower, double upper, double scale)
{
    const double length = rulerLength();
    if (_autoScale) {
        const double fitting = length / std::abs(upper - lower);
        scale = isPositive(fitting) ? fitting : scale;
    } else if (std::abs((upper - lower) * scale - length) > RelativeRounding * length) {
        // An upper end that agrees is kept to the last digit.
        upper = lower + length / scale;
    }

    const bool otherScale = scale != _scale;
    const bool otherRange = lower != _lower || upper != _upper;
    if (!otherScale && !otherRange)
        return false;

    _scale = scale;
    _lower = lower;
    _upper = upper;
    update();
    const QPointer<Ruler> alive(this);
    if (otherScale)
        emit scaleChanged(_scale);
    if (alive && otherRange)
        emit rangeChanged(_lower, _upper);
    if (alive)
        updateSpacing();
    return true;
}

void Ruler::updateSpacing()
{
    const double length = rulerLength();
    const double gap = fontMetrics().averageCharWidth() * (isVertical() ? 1.0 : 2.0);
    double major = 0;
    double minor = 0;
    if (length > 0 && isPositive(_scale) && _upper != _lower) {
        // Coarser ticks may have shorter texts: the first distance whose texts fit is the best.
        constexpr int MostSteps = 60;
        double minimum = fontMetrics().height();
        for (int i = 0; i < MostSteps; ++i) {
            chooseSpacing(minimum, major, minor);
            if (major <= 0 || major * _scale >= labelExtent(major) + gap)
                break;
            minimum = major * _scale * 1.001;
        }
    }
    applySpacing(major, minor, major > 0 ? alignedOffset(major) : _offset);
}

void Ruler::applySpacing(double major, double minor, double offset)
{
    if (major == _majorSpacing && minor == _minorSpacing && offset == _offset)
        return;

    _majorSpacing = major;
    _minorSpacing = minor;
    _offset = offset;
    update();
    emit changedInterval(_majorSpacing, _minorSpacing, _offset);
}

bool Ruler::getTickText(double value, double nextValue, int line, QString &text) const
{
    if (line != 0)
        return false;
    text = numberText(value, std::abs(nextValue - value));
    return true;
}

void Ruler::chooseSpacing(double minimumPixels, double &major, double &minor) const
{
    major = roundTickDistance(minimumPixels / _scale);
    minor = major > 0 ? minorOf(major) : 0;
    if (minor * _scale < LeastMinorPixels)
        minor = major;
}

double Ruler::labelExtent(double major) const
{
    const QFontMetricsF metrics(font());
    if (isVertical())
        return metrics.height() * lineCount();

    // The longest texts stand at the ends, where values have most digits, or beside a clean zero.
    constexpr int MostMeasured = 12;
    const QVector<double> ticks = ticksAt(major);
    const int step = std::max(1, ticks.size() / MostMeasured);
    double extent = 0;
    QString text;
    for (int i = 0; i < ticks.size(); i += i + step < ticks.size() ? step : 1) {
        const double value = ticks[i] + _offset;
        for (int line = 0; line < lineCount(); ++line) {
            if (getTickText(value, value + major, line, text))
                extent = std::max(extent, metrics.horizontalAdvance(text));
        }
    }
    return extent;
}

/** Values of the ticks of a distance in ascending order. */
QVector<double> Ruler::ticksAt(double spacing) const
{
    return tickValues(std::min(_lower, _upper), std::max(_lower, _upper), spacing, _offset);
}

double Ruler::alignedOffset(double) const
{
    return _offset;
}

QVector<RulerLabel> Ruler::labels(int line) const
{
    const QFontMetricsF metrics(font());
    QVector<RulerLabel> result;
    for (const double value : ticksAt(_majorSpacing)) {
        RulerLabel label;
        const double shown = value + _offset;
        if (!getTickText(shown, shown + _majorSpacing, line, label.text) || label.text.isEmpty())
            continue;
        label.position = valueToPixel(value);
        if (isVertical())
            label.position += line * metrics.height();
        label.extent = isVertical() ? metrics.height() : metrics.horizontalAdvance(label.text);
        result.append(label);
    }
    return result;
}

int Ruler::rulerLength() const
{
    return isVertical() ? height() : width();
}

QSize Ruler::sizeHint() const
{
    return sizeWithLength(fontMetrics().averageCharWidth() * 40);
}

QSize Ruler::minimumSizeHint() const
{
    return sizeWithLength(fontMetrics().height() * 2);
}

QSize Ruler::sizeWithLength(int length) const
{
    const QFontMetrics metrics = fontMetrics();
    if (!isVertical())
        return {length, qCeil(textDistance()) + lineCount() * metrics.height() + 2};
    // Room for a text turned along the ruler beside the values.
    const int texts = metrics.horizontalAdvance(QStringLiteral("-0.0e+00")) + metrics.height();
    return {qCeil(textDistance()) + texts + 2, length};
}

void Ruler::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const Scheme &scheme = Scheme::Current();

    drawSelection(painter);
    drawBaseline(painter);
    drawTicks(painter, _minorSpacing, scheme.rulers.minorTick);
    drawTicks(painter, _majorSpacing, scheme.rulers.majorTick);
    for (int line = 0; line < lineCount(); ++line)
        drawLabels(painter, line);
}

void Ruler::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (!applyRange(_lower, _upper, _scale))
        updateSpacing();
}

void Ruler::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        updateGeometry();
        updateSpacing();
    }
}

double Ruler::textDistance() const
{
    return Scheme::Current().rulers.majorTick + 2;
}

/** The area from one pixel to another along the ruler, over its whole breadth. */
QRectF Ruler::bandRect(double from, double to) const
{
    return isVertical() ? QRectF(0, from, width(), to - from)
                        : QRectF(from, 0, to - from, height());
}

/** A tick of one device pixel or about one pixel, on the grid of the device. Times stand at the
 *  left edge of their pixel; the ends of an amplitude range stand in the first and last row. */
QRectF Ruler::tickRect(double pixel, int length) const
{
    const double ratio = devicePixelRatioF();
    const double breadth = std::max(1.0, std::floor(ratio)) / ratio;
    const double last = rulerLength() - breadth;
    const double along = endsOnPixels() ? std::round(pixel * last / rulerLength() * ratio) / ratio
                                        : std::min(std::floor(pixel * ratio + 1E-6) / ratio, last);
    switch (_position) {
    case Bottom:
        return {along, 0, breadth, static_cast<double>(length)};
    case Top:
        return {along, static_cast<double>(height() - length), breadth,
                static_cast<double>(length)};
    case Left:
        return {static_cast<double>(width() - length), along, static_cast<double>(length), breadth};
    case Right:
        break;
    }
    return {0, along, static_cast<double>(length), breadth};
}

QRectF Ruler::labelRect(const RulerLabel &label, int line) const
{
    const double distance = textDistance();
    const double lineHeight = QFontMetricsF(font()).height();
    switch (_position) {
    case Bottom:
        return {label.start, distance + line * lineHeight, label.extent, lineHeight};
    case Top:
        return {label.start, height() - distance - (line + 1) * lineHeight, label.extent,
                lineHeight};
    case Left:
        return {0, label.start, width() - distance - 1, label.extent};
    case Right:
        break;
    }
    return {distance + 1, label.start, width() - distance - 1, label.extent};
}

void Ruler::drawBaseline(QPainter &painter) const
{
    QColor color = palette().color(foregroundRole());
    color.setAlphaF(0.4);
    const double breadth = 1 / devicePixelRatioF();
    switch (_position) {
    case Bottom:
        painter.fillRect(QRectF(0, 0, width(), breadth), color);
        break;
    case Top:
        painter.fillRect(QRectF(0, height() - breadth, width(), breadth), color);
        break;
    case Left:
        painter.fillRect(QRectF(width() - breadth, 0, breadth, height()), color);
        break;
    case Right:
        painter.fillRect(QRectF(0, 0, breadth, height()), color);
        break;
    }
}

void Ruler::drawSelection(QPainter &painter) const
{
    if (!hasSelection())
        return;

    const Scheme &scheme = Scheme::Current();
    double from = valueToPixel(_selectionLower);
    double to = valueToPixel(_selectionUpper);
    if (from > to)
        std::swap(from, to);
    const double length = rulerLength();
    painter.fillRect(bandRect(std::max(from, 0.0), std::min(to, length)), scheme.rulers.selection);
    if (!_selectionHandles)
        return;

    const QColor color = palette().color(QPalette::Highlight);
    for (const Handle handle : {Handle::Lower, Handle::Upper}) {
        const double pixel =
            valueToPixel(handle == Handle::Lower ? _selectionLower : _selectionUpper);
        if (pixel < -2 || pixel > length + 2)
            continue;
        const double half = handle == _hovered ? 2 : 1;
        const double middle = qBound(half, std::floor(pixel), length - half);
        painter.fillRect(bandRect(middle - half, middle + half),
                         handle == _hovered ? color : color.lighter(isEnabled() ? 115 : 150));
    }
}

void Ruler::drawTicks(QPainter &painter, double spacing, int length) const
{
    const QColor color = palette().color(foregroundRole());
    for (const double value : ticksAt(spacing))
        painter.fillRect(tickRect(valueToPixel(value), length), color);
}

void Ruler::drawLabels(QPainter &painter, int line) const
{
    QColor color = palette().color(foregroundRole());
    if (line > 0)
        color.setAlphaF(0.75);
    painter.setPen(color);

    const double gap = fontMetrics().averageCharWidth() * (isVertical() ? 0.0 : 1.0);
    const int alignment = _position == Left    ? Qt::AlignRight
                          : _position == Right ? Qt::AlignLeft
                                               : Qt::AlignHCenter;
    for (const RulerLabel &label : layoutLabels(labels(line), rulerLength(), gap)) {
        // The second line of a value moved inwards would cover the first.
        const bool isMoved = label.start != label.position - 0.5 * label.extent;
        if (isVertical() && line > 0 && isMoved)
            continue;
        painter.drawText(labelRect(label, line), alignment | Qt::AlignVCenter | Qt::TextDontClip,
                         label.text);
    }
}

} // namespace Gui
} // namespace Tellarix
