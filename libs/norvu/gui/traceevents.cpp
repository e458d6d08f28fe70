// SPDX-License-Identifier: LGPL-3.0-or-later

#include "trace.h"

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QStyleOptionFrame>
#include <QStyleOptionViewItem>

namespace Norvu {
namespace Gui {

void Trace::mouseReleaseEvent(QMouseEvent *event)
{
    QWidget::mouseReleaseEvent(event);
    const QPointer<Trace> alive(this);
    emit clicked(event);
    // A row that is gone has no parent to which the event could go on.
    if (!alive)
        event->accept();
}

void Trace::enterEvent(QEvent *)
{
    update();
}

void Trace::leaveEvent(QEvent *)
{
    update();
}

void Trace::paintEvent(QPaintEvent *event)
{
    {
        QPainter painter(this);
        if (!_static)
            drawItem(painter);
        else if (hasFocus())
            drawPanel(painter);
    }
    QWidget::paintEvent(event);
}

void Trace::drawPanel(QPainter &painter)
{
    QStyleOptionFrame option;
    option.initFrom(this);
    option.rect = contentsRect();
    option.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, this);
    option.midLineWidth = 0;
    option.state |= QStyle::State_Sunken;
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
}

void Trace::drawItem(QPainter &painter)
{
    QStyleOptionViewItem option;
    option.rect = rect();
    option.palette = palette();
    option.showDecorationSelected = true;
    option.state.setFlag(QStyle::State_MouseOver, hasMouseTracking() && underMouse());
    option.state.setFlag(QStyle::State_Active, isActiveWindow());
    option.state.setFlag(QStyle::State_Enabled, isEnabled());
    option.state.setFlag(QStyle::State_Selected, _selected);
    style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &option, &painter, this);
    style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, &painter, this);
}

void Trace::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);

    const Tellarix::RecordSequence *sequence = _fitToRecord ? _recordWidget->records(0) : nullptr;
    if (!sequence || sequence->isEmpty())
        return;

    const Tellarix::Core::TimeWindow window = sequence->timeWindow();
    showWindow(window.startTime(), window.endTime());
}

} // namespace Gui
} // namespace Norvu
