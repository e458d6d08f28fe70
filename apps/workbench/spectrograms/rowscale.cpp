// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowscale.h"

#include "spectrogramrow.h"

namespace Workbench {

RowScale::RowScale(const SpectrogramRow *row, QWidget *parent) : SpectrogramScale(parent), _row(row)
{
    QSizePolicy policy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    connect(row, SIGNAL(wantedChanged()), this, SLOT(readRow()));
    connect(row, SIGNAL(axisChanged()), this, SLOT(readRow()));
    connect(row, SIGNAL(colorsChanged()), this, SLOT(readRow()));
    connect(row, SIGNAL(pictureMoved()), this, SLOT(followPicture()));
    readRow();
}

/** The axis stands beside the picture, also where this is but a part of the row. */
void RowScale::followPicture()
{
    const QRect picture = _row->pictureRect();
    const int top = mapFromGlobal(_row->mapToGlobal(picture.topLeft())).y();
    setPictureArea(top, picture == _row->canvasRect() ? 0 : picture.height());
}

void RowScale::resizeEvent(QResizeEvent *event)
{
    SpectrogramScale::resizeEvent(event);
    followPicture();
}

void RowScale::readRow()
{
    const AmplitudeColors &colors = _row->colors();
    setVisible(_row->isWanted());
    setAxis(Norvu::Gui::SpectrogramAxis(_row->axis()));
    setColors(colors.gradient, colors.discrete, colors.lower, colors.upper, colors.logarithmic,
              _row->unit());
}

} // namespace Workbench
