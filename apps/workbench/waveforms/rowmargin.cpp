// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowmargin.h"

#include "spectrograms/spectrogramrow.h"
#include "spectrograms/spectrogramscale.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/vruler.h>

#include <QHBoxLayout>

using Norvu::Gui::Trace;
using Norvu::Gui::VRuler;

namespace Workbench {

RowMargin::RowMargin(Trace *row) : QWidget(row), _row(row)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Trace::Spacing());
}

void RowMargin::setRulerShown(bool show)
{
    if (show == (_ruler != nullptr))
        return;
    if (show) {
        addRuler();
    } else {
        delete _ruler;
        _ruler = nullptr;
    }
}

void RowMargin::addRuler()
{
    auto *widget = _row->recordWidget();
    _ruler = new VRuler(this);
    const QString unit = widget->recordUnit(widget->currentRecords());
    _ruler->setAnnotation(unit.isEmpty() ? tr("counts") : unit);
    _ruler->setInteractive(false);
    // Room for ticks, the longest number, and the unit beside it.
    _ruler->setFixedWidth(fontMetrics().horizontalAdvance("-8.8e+08") + 2 * fontMetrics().height());
    static_cast<QHBoxLayout *>(layout())->insertWidget(0, _ruler);
    _ruler->show(); // what isn't shown yet counts for nothing in size hints
    connect(widget, SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *)), _ruler,
            SLOT(updateScale(Tellarix::Gui::RecordWidget *)));
    _ruler->updateScale(widget);
}

void RowMargin::setScaleShown(bool show)
{
    if (show && !_scale)
        addScale();
    else if (!show && _scale) {
        delete _scale;
        _scale = nullptr;
    }
    updateScale();
}

void RowMargin::addScale()
{
    _scale = new SpectrogramScale(this);
    QSizePolicy policy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    policy.setRetainSizeWhenHidden(true);
    _scale->setSizePolicy(policy);
    layout()->addWidget(_scale);
    connect(_row->recordWidget(), SIGNAL(colorsChanged()), this, SLOT(updateScale()));
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

void RowMargin::updateScale()
{
    const auto *row = qobject_cast<SpectrogramRow *>(_row->recordWidget());
    if (!_scale || !row)
        return;
    const AmplitudeColors &colors = row->colors();
    const int before = scaleWidth();
    _scale->setVisible(row->isWanted());
    _scale->setAxis(Norvu::Gui::SpectrogramAxis(row->axis()));
    _scale->setColors(colors.gradient, colors.discrete, colors.lower, colors.upper,
                      colors.logarithmic, row->unit());
    if (scaleWidth() != before)
        emit scaleWidthChanged();
}

} // namespace Workbench
