// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include <norvu/gui/trace.h>

#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QScrollArea>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Norvu {
namespace Gui {

namespace {

/** Distances that are no number go last: an order needs them to be somewhere. */
bool distanceAndLabelLessThan(const Trace *a, const Trace *b)
{
    const double distanceA = a->data(TraceDistance).toDouble();
    const double distanceB = b->data(TraceDistance).toDouble();
    const bool isNaNA = std::isnan(distanceA);
    const bool isNaNB = std::isnan(distanceB);
    if (isNaNA != isNaNB)
        return isNaNB;
    if (!isNaNA && distanceA != distanceB)
        return distanceA < distanceB;
    return a->label() < b->label();
}

QString recordIDText(const Tellarix::DataModel::Stream *stream,
                     TraceView::RecordIDStrategy strategy)
{
    const QString code(stream->code().c_str());
    switch (strategy) {
    case TraceView::ComponentRecordID:
        return QStringLiteral("%1").arg(code.right(1));
    case TraceView::ChannelRecordID:
        return code;
    case TraceView::NoRecordID:
        break;
    }
    return QString();
}

/** A square that takes room only across, so that a wide one doesn't make its bar high. */
class WidthItem : public QWidgetItem
{
public:
    using QWidgetItem::QWidgetItem;

    QSize sizeHint() const override { return {QWidgetItem::sizeHint().width(), 0}; }
    QSize minimumSize() const override { return {QWidgetItem::minimumSize().width(), 0}; }
};

} // namespace

TraceView::TraceView(QWidget *parent, Qt::WindowFlags f, Tellarix::Gui::TimeScale *timeScale,
                     bool withToolBar)
    : QFrame(parent, f), _controlActions(this)
{
    setFocusPolicy(Qt::WheelFocus);
    setAttribute(Qt::WA_MacShowFocusRect);
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setMouseTracking(true);

    createScrollArea();
    createTimeScale(timeScale);
    if (withToolBar)
        createToolBar();
    createWrapper();
    setupLayout();
    createActions();
    createCrosshairOverlay();

    setTimeRange(0.0, 600.0);
    _timeScale->installEventFilter(this);
}

TraceView::~TraceView()
{
    // Rows send events to their filter while they die: none of them may reach a half-gone view.
    _timeScale->removeEventFilter(this);
    _scrollArea->viewport()->removeEventFilter(this);
    _crosshairOverlay->removeEventFilter(this);
    for (Trace *row : std::as_const(_items)) {
        row->recordWidget()->removeEventFilter(this);
        row->recordWidget()->disconnect(this);
    }

    delete _filter;
    qDeleteAll(std::exchange(_items, {}));
}

void TraceView::createScrollArea()
{
    _contents = new QWidget;
    auto *layout = new QVBoxLayout(_contents);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    _scrollArea = new QScrollArea;
    _scrollArea->setFocusProxy(this);
    _scrollArea->setFrameShape(QFrame::NoFrame);
    _scrollArea->setWidget(_contents);
    _scrollArea->setWidgetResizable(true);
    _scrollArea->viewport()->installEventFilter(this);
}

void TraceView::createTimeScale(Tellarix::Gui::TimeScale *timeScale)
{
    _timeScale = timeScale ? timeScale : new Tellarix::Gui::TimeScale;
    _timeScale->setAbsoluteTimeEnabled(true, true);
    _timeScale->setRangeSelectionEnabled(true, true);
    connect(_timeScale, SIGNAL(rangeChangeRequested(double, double)), this,
            SLOT(setTimeRange(double, double)));
    connect(_timeScale, SIGNAL(changedInterval(double, double, double)), this,
            SLOT(changedTimeInterval(double, double, double)));

    _rulerSpacer = new QWidget;
    _extraSpacer = new QWidget;
    _extraSpacer->setFixedSize(0, 0);
}

void TraceView::createWrapper()
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    if (_toolBar) {
        auto *toolBarLayout = new QVBoxLayout;
        toolBarLayout->setContentsMargins(0, 0, 0, 0);
        toolBarLayout->addWidget(_toolBar);
        layout->addLayout(toolBarLayout);
    }

    auto *wrapper = new QWidget(this);
    wrapper->setObjectName(QStringLiteral("tracesWrapper"));
    wrapper->setBackgroundRole(QPalette::Base);
    wrapper->setAutoFillBackground(true);
    layout->addWidget(wrapper);
}

void TraceView::setupLayout()
{
    auto *wrapper = findChild<QWidget *>(QStringLiteral("tracesWrapper"));
    if (!wrapper)
        return;

    auto *bottomBar = new QWidget;
    auto *bottomLayout = new QHBoxLayout(bottomBar);
    bottomLayout->setSpacing(0);
    bottomLayout->setContentsMargins(Trace::Padding(), 0, Trace::Padding(), Trace::Padding());
    bottomLayout->addWidget(_rulerSpacer);
    bottomLayout->addWidget(_timeScale);
    _extraSpacer->setParent(bottomBar);
    bottomLayout->addItem(new WidthItem(_extraSpacer));

    auto *layout = new QVBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Trace::Spacing());
    layout->addWidget(_scrollArea);
    layout->addWidget(bottomBar);

    const int width = Trace::FixedLabelWidth(_colorIndicator ? ColorBarWidth : 0);
    if (width != _rulerSpacer->width())
        emit rulerSpacingChanged(width);
    _rulerSpacer->setFixedSize(width, 0);

    delete wrapper->layout();
    wrapper->setLayout(layout);
}

void TraceView::createCrosshairOverlay()
{
    _crosshairOverlay = new QWidget(this);
    _crosshairOverlay->installEventFilter(this);
    _crosshairOverlay->setGeometry(_scrollArea->viewport()->geometry());
    _crosshairOverlay->setEnabled(false);
    _crosshairOverlay->setAttribute(Qt::WA_TransparentForMouseEvents);
}

bool TraceView::addItem(Trace *row, RecordIDStrategy strategy)
{
    Q_ASSERT(row && !_items.contains(row));

    Tellarix::Gui::RecordWidget *widget = row->recordWidget();
    widget->setMinimumHeight(_minRowHeight);
    row->setColorBarWidth(_colorIndicator ? ColorBarWidth : 0);

    _items.append(row);
    rowLayout()->addWidget(row);
    row->setFocusProxy(this);
    widget->setMouseTracking(true);
    widget->installEventFilter(this);
    widget->setPreparation([this] { prepareVisibleRows(); });

    ++_emptyDataSlots;
    updateToolbar();

    watchFiltering(widget);
    applyViewTo(widget);
    bindStreams(row, strategy);
    emit layoutOrContentChanged();
    return true;
}

void TraceView::applyViewTo(Tellarix::Gui::RecordWidget *widget)
{
    if (!widget->alignment().valid() && _timeScale->alignment().valid())
        widget->setAlignment(_timeScale->alignment());

    const bool byWindow = _normMode.testFlag(WindowNormalization);
    const bool common = _normMode.testFlag(AllTracesNormalization);
    const Tellarix::Core::TimeWindow window = windowOf(widget);
    const Tellarix::RecordSequence *records = widget->records(widget->currentRecords());
    if (common && records) {
        const auto range = records->amplitudeRange(byWindow ? &window : nullptr);
        widget->setAmplRange(range.first, range.second);
    }
    widget->setBackgroundFiltering(_backgroundFiltering);
    if (_filter)
        widget->setFilter(_filter);
    widget->setAmplAutoScaleEnabled(!common);

    widget->setTimeScale(_timeScale->scale());
    widget->setGridSpacing(_timeScale->majorSpacing(), _timeScale->minorSpacing(),
                           _timeScale->offset());
    widget->setTimeRange(_tmin, _tmax);
    widget->enableFiltering(_filterEnabled);
    widget->setNormalizationWindow(byWindow ? window : Tellarix::Core::TimeWindow());
}

void TraceView::bindStreams(Trace *row, RecordIDStrategy strategy)
{
    for (int slot = 0; slot < row->metaDataCount(); ++slot) {
        Tellarix::DataModel::Stream *stream = row->metaData(slot);
        if (!stream)
            continue;

        if (stream->gain() != 0.0)
            row->recordWidget()->setRecordScale(slot, 1.0 / stream->gain());
        if (strategy != NoRecordID)
            row->recordWidget()->setRecordID(slot, recordIDText(stream, strategy));
        bindItem(Tellarix::DataModel::id(stream, "", true), row, slot);
    }
}

void TraceView::setItems(QList<Trace *> rows)
{
    removeItems();
    for (Trace *row : std::as_const(rows))
        addItem(row, NoRecordID);
}

void TraceView::removeItem(Trace *row)
{
    if (row && row == _currentItem)
        updateCurrentTrace(nullptr);

    const auto position = std::find(_items.begin(), _items.end(), row);
    if (position == _items.end())
        return;

    removeTraceItem(position);
    emit layoutOrContentChanged();
}

QList<Trace *>::iterator TraceView::removeTraceItem(QList<Trace *>::iterator position)
{
    Trace *row = *position;
    if (!row->_dataRequested) {
        --_emptyDataSlots;
        updateToolbar();
    }
    clearBindings(row);
    if (row == _currentItem)
        updateCurrentTrace(nullptr);

    // Whoever heard of the current row may have changed the list.
    const int index = _items.indexOf(row);
    if (index < 0)
        return _items.end();

    _items.removeAt(index);
    forgetItem(row);
    delete row;
    return _items.begin() + index;
}

void TraceView::forgetItem(Trace *row)
{
    _dragItems.removeAll(row);
    if (_crosshairRow == row)
        hideCrosshair();
}

void TraceView::removeItems()
{
    for (Trace *row : std::as_const(_items))
        rowLayout()->removeWidget(row);
    updateCurrentTrace(nullptr);

    const QList<Trace *> rows = std::exchange(_items, {});
    _bindings.clear();
    _emptyDataSlots = 0;
    for (Trace *row : rows)
        forgetItem(row);
    qDeleteAll(rows);
}

void TraceView::clear()
{
    removeItems();
    emit itemSelectionCleared();
    emit layoutOrContentChanged();
}

Trace *TraceView::itemAt(int index) const
{
    return _items.value(index, nullptr);
}

int TraceView::indexOf(Trace *row) const
{
    return _items.indexOf(row);
}

void TraceView::sort(bool (*lessThan)(const Trace *, const Trace *))
{
    emit distanceValuesRequired();

    for (Trace *row : std::as_const(_items))
        rowLayout()->removeWidget(row);
    // Bounded also for a comparison that contradicts itself.
    std::stable_sort(_items.begin(), _items.end(), lessThan);
    for (Trace *row : std::as_const(_items))
        rowLayout()->addWidget(row);

    emit layoutOrContentChanged();
}

void TraceView::sortView()
{
    sort(distanceAndLabelLessThan);
}

void TraceView::updateView()
{
    setCoveredTimeRange();
}

void TraceView::updateRecords()
{
    for (Trace *row : std::as_const(_items))
        row->recordWidget()->updateRecords();
}

QBoxLayout *TraceView::rowLayout() const
{
    return static_cast<QBoxLayout *>(_contents->layout());
}

} // namespace Gui
} // namespace Norvu
