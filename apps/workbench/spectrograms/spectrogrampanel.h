// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "amplitudecolors.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace Workbench {

class GradientPanel;
class HistoryBox;
class Spectrograms;

/** The settings of all spectrograms: axis, range of the colours, and the colours. */
class SpectrogramPanel : public QWidget
{
    Q_OBJECT

public:
    SpectrogramPanel(Spectrograms *spectrograms, QWidget *parent = nullptr);

    GradientPanel *gradientPanel() const { return _gradient; }

    void restoreSettings();
    void saveSettings() const;

signals:
    /** What is wrong with an input, or doesn't fit the data; empty when it is right again. */
    void problem(const QString &message);

private slots:
    void applyAxis(const QString &text);
    void applyRange();
    void applyGradient();
    void showRange();
    void showProblems();

private:
    void createAxis(QFormLayout *form);
    void createRange(QFormLayout *form);
    void showProblem(const QString &message);
    QString readRange(ColorRange &range) const;

    Spectrograms *_spectrograms;
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
