// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowmargin.h"

#include "bench/rowaddition.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/vruler.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

using Norvu::Gui::Trace;
using Norvu::Gui::VRuler;

namespace Workbench {

namespace {

/** Of the numbers at a ruler, relative to other texts. */
constexpr double NumberSize = 0.85;

} // namespace

RowMargin::RowMargin(Trace *row) : QWidget(row), _row(row)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Trace::Spacing());
    row->recordWidget()->installEventFilter(this);
}

void RowMargin::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeRuler();
}

bool RowMargin::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        placeRuler();
    return QWidget::eventFilter(watched, event);
}

/** The traces may have less than the height of the row. */
void RowMargin::placeRuler()
{
    if (_rulerColumn)
        _rulerColumn->layout()->setContentsMargins(0, std::max(0, _row->recordWidget()->y() - y()),
                                                   0, 0);
}

void RowMargin::setRulerUsed(bool used)
{
    _rulerUsed = used;
    if (_ruler)
        _ruler->setVisible(used);
}

void RowMargin::setRulerShown(bool show)
{
    if (show == (_ruler != nullptr))
        return;
    if (show) {
        addRuler();
    } else {
        delete _rulerColumn;
        _rulerColumn = nullptr;
        _ruler = nullptr;
    }
}

void RowMargin::addRuler()
{
    auto *widget = _row->recordWidget();
    _rulerColumn = new QWidget(this);
    auto *column = new QVBoxLayout(_rulerColumn);
    _ruler = new VRuler(_rulerColumn);
    _ruler->setPosition(VRuler::Right); // of the traces
    QSizePolicy policy = _ruler->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    _ruler->setSizePolicy(policy);
    column->addWidget(_ruler);
    _ruler->setInteractive(false);
    QFont small = font();
    small.setPointSizeF(NumberSize * small.pointSizeF());
    _ruler->setFont(small);
    // Room for ticks, the longest number, and the unit beside it.
    _ruler->setFixedWidth(fontMetrics().horizontalAdvance("-8.8e+08") + 2 * fontMetrics().height());
    static_cast<QHBoxLayout *>(layout())->insertWidget(0, _rulerColumn);
    placeRuler();
    _rulerColumn->show();
    _ruler->setVisible(_rulerUsed); // what isn't shown yet counts for nothing in size hints
    connect(widget, SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *)), this, SLOT(updateRuler()));
    updateRuler();
}

void RowMargin::updateRuler()
{
    if (!_ruler)
        return;
    auto *widget = _row->recordWidget();
    const QString unit = widget->recordUnit(widget->currentRecords());
    _ruler->setAnnotation(unit.isEmpty() ? tr("counts") : unit);
    _ruler->updateScale(widget);
}

void RowMargin::setScaleOf(RowAddition *addition)
{
    if ((addition != nullptr) == (_scale != nullptr))
        return;
    if (!addition) {
        delete _scale;
        _scale = nullptr;
        return;
    }
    _scale = addition->makeScale(_row, this);
    if (_scale)
        layout()->addWidget(_scale);
}

int RowMargin::scaleWidth() const
{
    return _scale ? _scale->sizeHint().width() : 0;
}

void RowMargin::setScaleWidth(int width)
{
    if (_scale)
        _scale->setFixedWidth(width);
}

} // namespace Workbench
