// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "crosshair_p.h"
#include "filteringcount_p.h"
#include "rowstack_p.h"
#include "streambindings_p.h"
#include "tracetoolbar_p.h"

#include <norvu/gui/trace.h>
#include <tellarix/core/records/recordsequence.h>

#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QScrollArea>
#include <QVBoxLayout>

#include <utility>

namespace Norvu {
namespace Gui {

namespace {

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
    : QFrame(parent, f), _controlActions(this), _bindings(std::make_unique<StreamBindings>()),
      _filtering(std::make_unique<FilteringCount>())
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
    _crosshairOverlay = new Crosshair(_timeScale, this);
    _crosshairOverlay->setGeometry(_scrollArea->viewport()->geometry());
}

} // namespace Gui
} // namespace Norvu
