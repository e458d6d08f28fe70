// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/vruler.h>

#include <tellarix/qt/records/recordwidget.h>

#include <QPainter>
#include <QPointer>

#include <cmath>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

namespace {

using Range = QPair<double, double>;

Range shownRange(const RecordWidget &widget, int slot)
{
    const Range range = widget.amplitudeRange(slot);
    const double factor = widget.shownFactor(slot);
    return {range.first * factor, range.second * factor};
}

bool isShown(const RecordWidget &widget, int slot)
{
    return widget.isRecordVisible(slot) &&
           (widget.isFilteringEnabled() ? widget.filteredRecords(slot) : widget.records(slot));
}

Range rangeOfOverlaidSlots(const RecordWidget &widget)
{
    Range result(0, 0);
    for (int slot = 0; slot < widget.slotCount(); ++slot) {
        if (!isShown(widget, slot))
            continue;
        const Range range = shownRange(widget, slot);
        // Descending ones are those of reversed polarity.
        if (range.first != range.second)
            result = range;
    }
    return result;
}

} // namespace

VRuler::VRuler(QWidget *parent, Qt::WindowFlags f) : Ruler(parent, f, Left)
{
    setAutoScaleEnabled(true);
    setRange(-1.0, 1.0);
}

VRuler::~VRuler() = default;

QSize VRuler::sizeHint() const
{
    return Ruler::sizeHint();
}

void VRuler::updateScale(RecordWidget *widget)
{
    if (!widget)
        return;

    const Range range = widget->drawMode() == RecordWidget::Overlaid
                            ? rangeOfOverlaidSlots(*widget)
                            : shownRange(*widget, widget->currentRecords());
    const QPointer<RecordWidget> present(widget);
    setRange(range.first, range.second);
    if (present)
        present->setGridVRange(range.first, range.second);
}

bool VRuler::getTickText(double value, double nextValue, int line, QString &text) const
{
    if (line != 0)
        return false;

    const double magnitude = std::abs(value);
    if (magnitude > 1000.0)
        text.setNum(value, 'g', 2);
    else if (magnitude > 1.0)
        text.setNum(value, 'f', 1);
    else if (0.01 * std::abs(value - nextValue) > magnitude)
        text = QStringLiteral("0");
    else
        text.setNum(value, 'g', 6);
    return true;
}

void VRuler::paintEvent(QPaintEvent *event)
{
    Ruler::paintEvent(event);
    if (_annotation.isEmpty())
        return;

    QPainter painter(this);
    const int w = width() - 1;
    const int h = height() - 1;
    const QRect extent = fontMetrics().boundingRect(QRect(), Qt::TextDontClip, _annotation);
    if (h <= extent.right() - extent.left())
        return;

    painter.save();
    // It reads along the edge away from the traces.
    painter.translate(position() == Right ? width() - extent.height() : 0, (h + w + 2) / 2);
    painter.rotate(-90.0);
    painter.drawText(QRect(QPoint(0, 0), QPoint(w, extent.bottom() - extent.top())),
                     Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextDontClip, _annotation);
    painter.restore();
}

} // namespace Gui
} // namespace Norvu
