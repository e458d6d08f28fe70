// SPDX-License-Identifier: LGPL-3.0-or-later

#include "trace.h"

#include "colorbar_p.h"
#include "rowlabel_p.h"
#include "rowtimescale_p.h"

#include <norvu/gui/traceview.h>
#include <tellarix/core/records/record.h>

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPointer>

#include <algorithm>
#include <memory>

namespace Norvu {
namespace Gui {

namespace {

constexpr int MinimumRecordWidth = 10;

/** Cells of the grid: bar, axis column, traces and extra widget from left to right. */
enum Column
{
    BarColumn,
    AxisColumn,
    TraceColumn,
    ExtraColumn,
};

enum Row
{
    HeaderRow,
    RecordRow, /**< one further down below an upper widget, and so what follows */
    TimeAxisRow,
};

/** Room for the widest text of the amplitude axis. */
int axisTextWidth()
{
    const QFontMetrics metrics = QApplication::fontMetrics();
    return metrics.horizontalAdvance(QStringLiteral(" -1.00E-999")) + metrics.height();
}

/** Shows what was just put into a layout, unless it was hidden: the layout itself shows it later,
 * when whoever changes many rows together has no hold on it any more. */
void showAtOnce(QWidget *widget)
{
    if (!widget->testAttribute(Qt::WA_WState_ExplicitShowHide))
        widget->show();
}

/** Records have no height of their own: rows ask for two lines of text. */
class PrivateRecordWidget : public Tellarix::Gui::RecordWidget
{
public:
    using RecordWidget::RecordWidget;

    QSize sizeHint() const override
    {
        const int lineHeight = fontMetrics().height();
        return QSize(10 * lineHeight, 2 * lineHeight);
    }
};

/** Sets a range about the mean; @p T is the type of the samples, in which it is worked out. */
template <typename T>
void setSymmetricRange(Tellarix::Gui::RecordWidget *widget, const Tellarix::SampleSummary &summary)
{
    if (summary.isEmpty())
        return;

    const T mean = static_cast<T>(summary.mean());
    const T half =
        std::max(static_cast<T>(summary.maximum) - mean, mean - static_cast<T>(summary.minimum));
    widget->setAmplRange(mean - half, mean + half);
}

void setAutomaticRange(Tellarix::Gui::RecordWidget *widget, const Tellarix::Record &record)
{
    switch (record.dataType()) {
    case Tellarix::DataType::Float:
        setSymmetricRange<float>(widget, record.summary());
        break;
    case Tellarix::DataType::Double:
        setSymmetricRange<double>(widget, record.summary());
        break;
    default:
        break;
    }
}

} // namespace

Trace::Trace(const QString &label, QColor color, QWidget *parent, Qt::WindowFlags f)
    : Trace(label, new PrivateRecordWidget, color, parent, f)
{}

Trace::Trace(const QString &label, Tellarix::Gui::RecordWidget *widget, QColor color,
             QWidget *parent, Qt::WindowFlags f)
    : QWidget(parent, f), _recordWidget(widget), _label(label)
{
    init(color);
}

Trace::~Trace()
{
    if (_view)
        _view->forgetDeletedItem(this);
}

void Trace::init(const QColor &color)
{
    setMouseTracking(true);
    initRecordWidget();

    _axisSpacer = new QWidget(this);
    _axisSpacer->setFixedWidth(axisTextWidth() + Padding());

    _header = new QWidget(this);
    _labelWidget = new RowLabel(_header);
    _labelWidget->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    _labelWidget->setTextInteractionFlags(Qt::NoTextInteraction);
    if (!_label.isEmpty())
        setLabel(_label);

    _colorBar = new ColorBar(color, this);
    _colorBar->setFixedWidth(0);

    initLayout();
    setColorBarWidth(0);
}

void Trace::initRecordWidget()
{
    _recordWidget->setParent(this);
    _recordWidget->setMinimumWidth(MinimumRecordWidth);
    _recordWidget->showScaledValues(true);
    _recordWidget->setAutoFillBackground(false);
    _recordWidget->setDrawAxis(true);
    _recordWidget->setAxisPosition(Tellarix::Gui::RecordWidget::AxisLeft);
    _recordWidget->setAxisWidth(axisTextWidth() + Padding() + Spacing());
    _recordWidget->setAxisSpacing(Spacing());
}

void Trace::initLayout()
{
    auto *headerLayout = new QHBoxLayout;
    headerLayout->setContentsMargins(0, 0, 0, 0);
    headerLayout->addWidget(_labelWidget);
    headerLayout->addStretch();
    _header->setLayout(headerLayout);

    QSizePolicy policy = _recordWidget->sizePolicy();
    policy.setVerticalPolicy(QSizePolicy::MinimumExpanding);
    _recordWidget->setSizePolicy(policy);
    addGrid();
}

/** Lays the cells out, also anew: a grid never gives up a column that it once had. One that gets
 * its widget only when it is filled posts no event, among which Qt searches for each row anew. */
void Trace::addGrid()
{
    auto *layout = new QGridLayout;
    layout->setSpacing(Spacing());
    layout->setContentsMargins(Padding(), Padding(), Padding(), Padding());
    layout->addWidget(_colorBar, HeaderRow, BarColumn, rowBelowUpper(RecordRow) + 1, 1);
    // Spans go to the last column: with one for the extra widget where there is none, the traces
    // would end short of the times that the view's time scale shows, as if there were no more data.
    layout->addWidget(_header, HeaderRow, AxisColumn, 1, -1);
    layout->addWidget(_recordWidget, rowBelowUpper(RecordRow), AxisColumn, 1, 2);
    layout->addWidget(_axisSpacer, rowBelowUpper(TimeAxisRow), AxisColumn);
    layout->setColumnStretch(TraceColumn, 1);
    if (_upperWidget)
        layout->addWidget(_upperWidget, RecordRow, AxisColumn, 1, 2);
    if (_extraWidget)
        addExtraWidget(layout);
    setLayout(layout);
    if (_timeAxis)
        addTimeAxis();
    if (_heading)
        layout->setMenuBar(_heading);
}

QGridLayout *Trace::grid() const
{
    return static_cast<QGridLayout *>(layout());
}

void Trace::addTimeAxis()
{
    QSizePolicy policy = _timeAxis->sizePolicy();
    policy.setVerticalPolicy(QSizePolicy::Maximum);
    _timeAxis->setSizePolicy(policy);
    grid()->addWidget(_timeAxis, rowBelowUpper(TimeAxisRow), TraceColumn, 1, -1);
}

int Trace::FixedLabelWidth(int extra)
{
    const int width = axisTextWidth() + Padding() + Spacing();
    return extra > 0 ? width + Spacing() + extra : width;
}

void Trace::showSlot(int slot)
{
    _recordWidget->setCurrentRecords(slot);
}

void Trace::addHeaderWidget(QWidget *widget)
{
    _header->layout()->addWidget(widget);
}

void Trace::setHeaderVisible(bool visible)
{
    _header->setVisible(visible);
}

void Trace::setExtraWidget(QWidget *widget)
{
    if (widget == _extraWidget)
        return;

    delete _extraWidget;
    _extraWidget = widget;
    if (_extraWidget) {
        addExtraWidget(grid());
        showAtOnce(_extraWidget);
        return;
    }
    renewGrid();
}

void Trace::setUpperWidget(QWidget *widget)
{
    if (widget == _upperWidget)
        return;

    delete _upperWidget;
    _upperWidget = widget;
    if (_upperWidget)
        _upperWidget->setParent(this);
    renewGrid();
    if (_upperWidget)
        _upperWidget->show();
}

int Trace::rowBelowUpper(int row) const
{
    return _upperWidget ? row + 1 : row;
}

void Trace::addExtraWidget(QGridLayout *layout)
{
    layout->addWidget(_extraWidget, RecordRow, ExtraColumn, _upperWidget ? 2 : 1, 1);
}

void Trace::renewGrid()
{
    const int spacing = grid()->verticalSpacing();
    const QMargins margins = grid()->contentsMargins();
    delete layout();
    addGrid();
    grid()->setVerticalSpacing(spacing);
    grid()->setContentsMargins(margins);
    QApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
}

void Trace::setHeading(QWidget *heading)
{
    if (heading == _heading)
        return;

    delete _heading;
    _heading = heading;
    // What a layout calls its menu bar is a widget above all of its cells.
    grid()->setMenuBar(_heading);
    grid()->invalidate();
    if (_heading)
        showAtOnce(_heading);
}

void Trace::setVerticalPadding(int margin, int spacing)
{
    grid()->setVerticalSpacing(spacing);
    grid()->setContentsMargins(Padding(), margin, Padding(), margin);
}

void Trace::clearVerticalSpacing()
{
    grid()->setVerticalSpacing(0);
    grid()->setContentsMargins(0, 0, 0, 0);
}

void Trace::restoreVerticalSpacing()
{
    grid()->setVerticalSpacing(Spacing());
    grid()->setContentsMargins(Padding(), Padding(), Padding(), Padding());
}

void Trace::setRecord(const Tellarix::Record *record, bool fit, bool autoAmplitude, int slot)
{
    _fitToRecord = fit;
    if (!record) {
        _recordWidget->setRecords(slot, nullptr, true);
        return;
    }

    const QPointer<Trace> alive(this);
    auto sequence = std::make_unique<Tellarix::RingBuffer>(0, 0.5);
    sequence->feed(record);
    if (!_recordWidget->setRecords(slot, sequence.get(), true))
        return;
    sequence.release();

    const Tellarix::Core::TimeWindow window = record->timeWindow();
    if (alive)
        showWindow(window.startTime(), window.endTime());
    if (alive && autoAmplitude)
        setAutomaticRange(_recordWidget, *record);
}

void Trace::showWindow(Tellarix::Core::Time start, Tellarix::Core::Time end)
{
    const Tellarix::Core::Time alignment = _recordWidget->alignment();
    _recordWidget->showTimeRange((start - alignment).length(), (end - alignment).length());
    if (_timeAxis)
        static_cast<RowTimeScale *>(_timeAxis)->follow();
}

Trace *Trace::clone() const
{
    return new Trace(_label, Qt::black);
}

void Trace::setTimeAxisEnabled(bool enable, bool interactive)
{
    if (enable == (_timeAxis != nullptr))
        return;

    if (!enable) {
        delete _timeAxis;
        _timeAxis = nullptr;
        return;
    }

    auto *axis = new RowTimeScale(_recordWidget);
    axis->setAlignment(_recordWidget->alignment());
    // Until it is laid out, from when on it follows.
    axis->showRange(_recordWidget->tmin(), _recordWidget->tmax());
    _timeAxis = axis;
    addTimeAxis();

    connect(_timeAxis, SIGNAL(changedInterval(double, double, double)), _recordWidget,
            SLOT(setGridSpacing(double, double, double)));
    if (interactive) {
        connect(_timeAxis, SIGNAL(rangeChangeRequested(double, double)), this,
                SLOT(setTimeRange(double, double)));
    }
    // The ticks may already be those of the final width, and then no signal follows.
    _recordWidget->setGridSpacing(_timeAxis->majorSpacing(), _timeAxis->minorSpacing(),
                                  _timeAxis->offset());
}

bool Trace::setSelected(bool selected)
{
    if (selected == _selected)
        return false;

    _selected = selected;
    setForegroundRole(_selected ? QPalette::HighlightedText : QPalette::NoRole);
    setBackgroundRole(_selected ? QPalette::Highlight : QPalette::NoRole);
    update();
    return true;
}

void Trace::reset()
{
    _metaData.clear();
    _recordWidget->setSlotCount(0);
}

void Trace::setDisplay(double tmin, double tmax, double pps)
{
    _recordWidget->setTimeScale(pps);
    _recordWidget->setTimeRange(tmin, tmax);
    const QPointer<Tellarix::Gui::TimeScale> axis(_timeAxis);
    if (axis)
        axis->setScale(pps);
    if (axis)
        axis->setRange(tmin, tmax);
}

void Trace::setAlignment(Tellarix::Core::Time time)
{
    _recordWidget->setAlignment(time);
    if (_timeAxis)
        _timeAxis->setAlignment(time);
}

void Trace::setSpacing(int pixels)
{
    _recordWidget->setAxisWidth(pixels);
    _axisSpacer->setFixedWidth(std::max(pixels - Spacing(), 0));
}

void Trace::setTimeRange(double tmin, double tmax)
{
    const QPointer<Tellarix::Gui::TimeScale> axis(_timeAxis);
    if (axis)
        axis->showRange(tmin, tmax);
    if (!axis)
        return;
    _recordWidget->setTimeScale(axis->scale());
    _recordWidget->setTimeRange(axis->lower(), axis->upper());
}

} // namespace Gui
} // namespace Norvu
