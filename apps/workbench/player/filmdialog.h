// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "filmplan.h"

#include <tellarix/core/timewindow.h>

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace Norvu {
namespace Gui {
class DateTimeEdit;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** Asks which part of a replay is exported, and how. */
class FilmDialog : public QDialog
{
    Q_OBJECT

public:
    /** @param range  of the whole replay
     *  @param size   suggested for pictures */
    FilmDialog(const Tellarix::Core::TimeWindow &range, const QSize &size, QWidget *parent);

    FilmPlan plan() const;

public slots:
    void accept() override;

private slots:
    void askForFolder();
    void updateSummary();

private:
    QSpinBox *makeBox(int smallest, int largest, int value);
    Norvu::Gui::DateTimeEdit *makeTime(const Tellarix::Core::Time &time);

    QLineEdit *_folder;
    QSpinBox *_width;
    QSpinBox *_height;
    QSpinBox *_rate;
    Norvu::Gui::DateTimeEdit *_from;
    Norvu::Gui::DateTimeEdit *_to;
    QDoubleSpinBox *_step;
    QComboBox *_unit;
    QCheckBox *_film;
    QLabel *_summary;
    QDialogButtonBox *_buttons;
};

} // namespace Workbench
