// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrogramband.h"

#include "spectrogramrow.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace Workbench {

namespace {

/** Enough for an axis with two numbers, and for the shape of an onset. */
constexpr int LeastHeight = 64;
constexpr int Hint = 96;

/** Above the traces nothing but the pointer is told: what is dragged or clicked is a time. */
QPointF inRow(const QMouseEvent &event, const QWidget &band, const QWidget &row)
{
    QPointF position = event.localPos() + band.pos() - row.pos();
    const bool isHover = event.type() == QEvent::MouseMove && event.buttons() == Qt::NoButton;
    if (!isHover)
        position.setY(std::max(position.y(), 0.0));
    return position;
}

} // namespace

SpectrogramBand::SpectrogramBand(SpectrogramRow *row, QWidget *parent) : QWidget(parent), _row(row)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    row->setBand(this);
}

QSize SpectrogramBand::sizeHint() const
{
    return {Hint, Hint};
}

QSize SpectrogramBand::minimumSizeHint() const
{
    return {0, LeastHeight};
}

void SpectrogramBand::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.translate(_row->pos() - pos());
    painter.setClipRect(_row->pictureRect());
    _row->paintBand(painter);
}

void SpectrogramBand::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    _row->followBand();
}

void SpectrogramBand::moveEvent(QMoveEvent *event)
{
    QWidget::moveEvent(event);
    _row->followBand();
}

bool SpectrogramBand::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Leave:
        QCoreApplication::sendEvent(_row, event);
        return QWidget::event(event);
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick: {
        const auto &mouse = static_cast<QMouseEvent &>(*event);
        QMouseEvent passedOn(mouse.type(), inRow(mouse, *this, *_row), mouse.windowPos(),
                             mouse.screenPos(), mouse.button(), mouse.buttons(), mouse.modifiers(),
                             mouse.source());
        passedOn.ignore();
        QCoreApplication::sendEvent(_row, &passedOn);
        // What the row leaves alone has gone to the parent of both.
        return true;
    }
    default:
        return QWidget::event(event);
    }
}

} // namespace Workbench
