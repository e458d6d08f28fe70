// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "rowstack_p.h"

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
        releaseItem(row);
    }

    delete _filter;
    qDeleteAll(std::exchange(_items, {}));
}

void TraceView::createScrollArea()
{
    _contents = new RowStack;

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

    const QPointer<Tellarix::Gui::RecordWidget> widget(row->recordWidget());
    widget->setMinimumHeight(_minRowHeight);
    row->setColorBarWidth(_colorIndicator ? ColorBarWidth : 0);
    if (_nameWidth > 0)
        applyNameWidth(row);

    _items.append(row);
    row->_view = this;
    _contents->append(row);
    row->setFocusProxy(this);
    widget->setMouseTracking(true);
    widget->installEventFilter(this);
    widget->setPreparation([this] { prepareVisibleRows(); });

    ++_emptyDataSlots;
    updateToolbar();

    watchFiltering(widget);
    applyViewTo(widget);
    if (widget)
        bindStreams(row, strategy);
    // Without the view its rows are gone as well.
    if (widget)
        emit layoutOrContentChanged();
    return true;
}

void TraceView::applyViewTo(const QPointer<Tellarix::Gui::RecordWidget> &widget)
{
    if (!widget->alignment().valid() && _timeScale->alignment().valid())
        widget->setAlignment(_timeScale->alignment());

    const bool byWindow = _normMode.testFlag(WindowNormalization);
    const bool common = _normMode.testFlag(AllTracesNormalization);
    const Tellarix::Core::TimeWindow window = windowOf(widget);
    const Tellarix::RecordSequence *records = widget->records(widget->currentRecords());
    // Steps that the widget tells of, so that it may be gone before the next one.
    const std::function<void()> steps[] = {
        [&] {
            if (!common || !records)
                return;
            const auto range = records->amplitudeRange(byWindow ? &window : nullptr);
            widget->setAmplRange(range.first, range.second);
        },
        [&] { widget->setBackgroundFiltering(_backgroundFiltering); },
        [&] {
            if (_filter)
                widget->setFilter(_filter);
        },
        [&] { widget->setAmplAutoScaleEnabled(!common); },
        [&] {
            widget->setTimeScale(_timeScale->scale());
            widget->setGridSpacing(_timeScale->majorSpacing(), _timeScale->minorSpacing(),
                                   _timeScale->offset());
            widget->setTimeRange(_tmin, _tmax);
            widget->enableFiltering(_filterEnabled);
        },
        [&] { widget->setNormalizationWindow(byWindow ? window : Tellarix::Core::TimeWindow()); },
    };
    for (const auto &step : steps) {
        if (!widget)
            return;
        step();
    }
}

void TraceView::bindStreams(Trace *row, RecordIDStrategy strategy)
{
    const QPointer<Trace> present(row);
    for (int slot = 0; present && slot < row->metaDataCount(); ++slot) {
        Tellarix::DataModel::Stream *stream = row->metaData(slot);
        if (!stream)
            continue;

        if (stream->gain() != 0.0)
            row->recordWidget()->setRecordScale(slot, 1.0 / stream->gain());
        if (!present)
            return;
        if (strategy != NoRecordID)
            row->recordWidget()->setRecordID(slot, recordIDText(stream, strategy));
        bindItem(Tellarix::DataModel::id(stream, "", true), row, slot);
    }
}

void TraceView::setItems(QList<Trace *> rows)
{
    const QPointer<TraceView> alive(this);
    const QVector<QPointer<Trace>> added(rows.begin(), rows.end());
    removeItems();
    for (const QPointer<Trace> &row : added) {
        if (!alive)
            delete row;
        else if (row)
            addItem(row, NoRecordID);
    }
}

void TraceView::removeItem(Trace *row)
{
    const QPointer<TraceView> alive(this);
    if (row && row == _currentItem)
        updateCurrentTrace(nullptr);
    if (!alive || !_items.contains(row))
        return;

    removeTraceItem(row);
    if (alive)
        emit layoutOrContentChanged();
}

/** Deletes a row of the list. */
void TraceView::removeTraceItem(Trace *row)
{
    const QPointer<TraceView> alive(this);
    const QPointer<Trace> present(row);
    const bool wasFiltering = forgetItem(row);
    if (row == _currentItem)
        updateCurrentTrace(nullptr);
    delete present;
    if (alive && wasFiltering)
        tellFilteringProgress();
}

/** Takes a row that is about to go out of the list and all that goes with it; true if it was being
 *  filtered in the background. */
bool TraceView::forgetItem(Trace *row)
{
    if (!row->_dataRequested) {
        --_emptyDataSlots;
        updateToolbar();
    }
    clearBindings(row);
    _items.removeOne(row);
    return releaseItem(row);
}

/** Parts from a row; true if it was being filtered in the background. */
bool TraceView::releaseItem(Trace *row)
{
    row->_view = nullptr;
    row->recordWidget()->disconnect(this);
    _dragItems.removeAll(row);
    if (_crosshairRow == row)
        hideCrosshair();
    return _filteringRows.remove(row->recordWidget());
}

/** Forgets a row that is being deleted by someone else. */
void TraceView::forgetDeletedItem(Trace *row)
{
    const bool wasFiltering = forgetItem(row);
    const bool wasCurrent = row == _currentItem;
    if (wasCurrent)
        _currentItem = nullptr;

    // A receiver that deletes the view now would delete the row once more.
    const auto tell = [this, wasFiltering, wasCurrent] {
        const QPointer<TraceView> alive(this);
        if (wasCurrent && !_currentItem)
            emit currentItemChanged(nullptr, nullptr);
        if (alive && wasFiltering)
            tellFilteringProgress();
        if (alive)
            emit layoutOrContentChanged();
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

void TraceView::removeItems()
{
    for (Trace *row : std::as_const(_items))
        _contents->remove(row);
    const QPointer<TraceView> alive(this);
    updateCurrentTrace(nullptr);
    if (!alive)
        return;

    _bindings.clear();
    bool wasFiltering = false;
    while (alive && !_items.isEmpty()) {
        Trace *row = _items.takeFirst();
        wasFiltering |= releaseItem(row);
        delete row;
    }
    if (!alive)
        return;
    _emptyDataSlots = 0;
    if (wasFiltering)
        tellFilteringProgress();
}

void TraceView::clear()
{
    const QPointer<TraceView> alive(this);
    removeItems();
    if (alive)
        emit itemSelectionCleared();
    if (alive)
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
    const QPointer<TraceView> alive(this);
    emit distanceValuesRequired();
    if (!alive)
        return;

    // Bounded also for a comparison that contradicts itself.
    std::stable_sort(_items.begin(), _items.end(), lessThan);
    _contents->setOrder(_items);

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
    visitRows([](Trace *row) { row->recordWidget()->updateRecords(); });
}

} // namespace Gui
} // namespace Norvu
