// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "spectrogramscale.h"

namespace Workbench {

class SpectrogramRow;

/** The axis and the colours of a row's spectrogram, shown while it has one. */
class RowScale : public SpectrogramScale
{
    Q_OBJECT

public:
    /** @param row  is read when it tells that it has changed */
    RowScale(const SpectrogramRow *row, QWidget *parent);

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void readRow();
    void followPicture();

private:
    const SpectrogramRow *_row;
};

} // namespace Workbench
