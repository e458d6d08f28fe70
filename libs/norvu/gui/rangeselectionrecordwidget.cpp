// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/rangeselectionrecordwidget.h>

#include <QPainter>

namespace Norvu {
namespace Gui {

using Tellarix::Core::Time;

namespace {

constexpr int BandAlpha = 64;

} // namespace

RangeSelectionRecordWidget::RangeSelectionRecordWidget(QWidget *parent) : RecordWidget(parent)
{
    init();
}

RangeSelectionRecordWidget::RangeSelectionRecordWidget(
    const Tellarix::DataModel::WaveformStreamID &streamID, QWidget *parent)
    : RecordWidget(streamID, parent)
{
    init();
}

void RangeSelectionRecordWidget::init()
{
    setSelectionEnabled(true);
    connect(this, SIGNAL(selectedTimeRangeChanged(Tellarix::Core::Time, Tellarix::Core::Time)),
            this, SLOT(onChangingTimeRange(Tellarix::Core::Time, Tellarix::Core::Time)));
    connect(this, SIGNAL(selectedTimeRange(Tellarix::Core::Time, Tellarix::Core::Time)), this,
            SLOT(onSelectedTimeRange(Tellarix::Core::Time, Tellarix::Core::Time)));
}

void RangeSelectionRecordWidget::setDrawSelection(bool draw)
{
    if (draw == _drawSelection)
        return;

    _drawSelection = draw;
    update();
}

void RangeSelectionRecordWidget::onChangingTimeRange(Time start, Time end)
{
    _selectionStart = start;
    _selectionEnd = end;
    update();
}

void RangeSelectionRecordWidget::onSelectedTimeRange(Time, Time)
{
    _selectionStart = Time();
    _selectionEnd = Time();
    update();
}

void RangeSelectionRecordWidget::drawCustomBackground(QPainter &painter)
{
    if (!_drawSelection || _selectionStart == _selectionEnd)
        return;

    QColor color = palette().color(QPalette::Highlight);
    color.setAlpha(BandAlpha);
    painter.fillRect(QRect(QPoint(mapCanvasTime(_selectionStart), 0),
                           QPoint(mapCanvasTime(_selectionEnd), height() - 1)),
                     color);
}

} // namespace Gui
} // namespace Norvu
