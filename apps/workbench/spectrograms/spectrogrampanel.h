// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "amplitudecolors.h"
#include "spectrogramplace.h"

#include "bench/panel.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace Workbench {

class GradientPanel;
class HistoryBox;
class SpectrogramMenu;
class Spectrograms;

/** Adds spectrograms to the rows of waveforms, and holds the settings of all of them: axis, range
 * of the colours, and the colours. */
class SpectrogramPanel : public Panel
{
    Q_OBJECT

public:
    /** @param bench  has a view of rows */
    explicit SpectrogramPanel(Bench *bench);

    Spectrograms *spectrograms() const { return _spectrograms; }
    GradientPanel *gradientPanel() const { return _gradient; }

    QList<QMenu *> menus() const override;
    void saveState(QSettings &settings) const override;
    void restoreState(QSettings &settings) override;
    QVector<PanelPicture> pictures() override;

signals:
    /** What is wrong with an input, or doesn't fit the data; empty when it is right again. */
    void problem(const QString &message);

private slots:
    void applyAxis(const QString &text);
    void applyRange();
    void applyGradient();
    void showRange();
    void showFittedRange();
    void showProblems();

private:
    void createMenu();
    void createAxis(QFormLayout *form);
    void createRange(QFormLayout *form);
    void showProblem(const QString &message);
    QPixmap windowPicture(SpectrogramPlace place);
    QString readRange(ColorRange &range) const;

    Spectrograms *_spectrograms;
    SpectrogramMenu *_menu{nullptr};
    HistoryBox *_axis;
    QLabel *_problem;
    QComboBox *_mode;
    QLineEdit *_lower;
    QLineEdit *_upper;
    QCheckBox *_logarithmic;
    GradientPanel *_gradient;
    QString _axisProblem;
    QString _rangeProblem;
};

} // namespace Workbench
