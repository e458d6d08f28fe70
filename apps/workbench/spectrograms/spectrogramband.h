// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QWidget>

namespace Workbench {

class SpectrogramRow;

/**
 * Shows the spectrogram of a row above its traces.
 *
 * The mouse does there what it does above the traces: the row gets its events, those of pressed
 * buttons at its uppermost pixel.
 */
class SpectrogramBand : public QWidget
{
    Q_OBJECT

public:
    /** @param row  has this as its band as long as it lives */
    SpectrogramBand(SpectrogramRow *row, QWidget *parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    bool event(QEvent *event) override;

private:
    SpectrogramRow *_row;
};

} // namespace Workbench
