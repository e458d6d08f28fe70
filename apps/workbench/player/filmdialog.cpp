// SPDX-License-Identifier: LGPL-3.0-or-later

#include "filmdialog.h"

#include "bench/exportfile.h"

#include <norvu/gui/datetimeedit.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

using namespace Tellarix;
using Norvu::Gui::DateTimeEdit;

namespace Workbench {

namespace {

/** Of the whole replay, at first. */
constexpr double SecondsOfFilm = 30;
constexpr int SmallestSide = 64;
constexpr int LargestSide = 4096;
constexpr int HighestRate = 60;

Core::Time timeOf(const QDateTime &time)
{
    return Core::Time::FromUSecs(time.toMSecsSinceEpoch() * 1000);
}

} // namespace

FilmDialog::FilmDialog(const Core::TimeWindow &range, const QSize &size, QWidget *parent)
    : QDialog(parent), _folder(new QLineEdit(QDir(exportFolder()).filePath("replay"))),
      _width(makeBox(SmallestSide, LargestSide, size.width())),
      _height(makeBox(SmallestSide, LargestSide, size.height())),
      _rate(makeBox(1, HighestRate, FilmPlan().framesPerSecond)),
      _from(makeTime(range.startTime())), _to(makeTime(range.endTime())), _step(new QDoubleSpinBox),
      _unit(new QComboBox), _film(new QCheckBox(tr("Make a &film"))), _summary(new QLabel),
      _buttons(new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel))
{
    setWindowTitle(tr("Export the replay"));
    auto *browse = new QPushButton(tr("&Browse…"));
    auto *folder = new QHBoxLayout;
    folder->addWidget(_folder, 1);
    folder->addWidget(browse);
    auto *sides = new QHBoxLayout;
    sides->addWidget(_width);
    sides->addWidget(new QLabel("×"));
    sides->addWidget(_height);
    sides->addWidget(new QLabel(tr("pixels")));
    sides->addStretch();
    auto *step = new QHBoxLayout;
    step->addWidget(_step);
    step->addWidget(_unit);
    step->addStretch();

    _unit->addItem(tr("seconds"), 1);
    _unit->addItem(tr("minutes"), 60);
    _unit->addItem(tr("hours"), 3600);
    _unit->addItem(tr("days"), 86400);
    _step->setRange(0.01, 10000);
    const double perFrame = range.length().length() / (SecondsOfFilm * FilmPlan().framesPerSecond);
    int unit = _unit->count() - 1;
    while (unit > 0 && perFrame < _unit->itemData(unit).toInt())
        --unit;
    _unit->setCurrentIndex(unit);
    _step->setValue(perFrame / _unit->currentData().toInt());

    _film->setEnabled(!filmEncoder().isEmpty());
    _film->setChecked(_film->isEnabled());
    auto *hint = new QLabel(_film->isEnabled()
                                ? tr("A job makes it of the pictures.")
                                : tr("No program for films is installed (ffmpeg): pictures only."));
    hint->setWordWrap(true);
    _summary->setWordWrap(true);

    auto *form = new QFormLayout(this);
    form->addRow(tr("Folder"), folder);
    form->addRow(tr("Size"), sides);
    form->addRow(tr("Pictures a &second"), _rate);
    form->addRow(tr("F&rom"), _from);
    form->addRow(tr("&To"), _to);
    form->addRow(tr("Time per picture"), step);
    form->addRow(_film, hint);
    form->addRow(_summary);
    form->addRow(_buttons);

    connect(browse, SIGNAL(clicked()), this, SLOT(askForFolder()));
    connect(_buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(_buttons, SIGNAL(rejected()), this, SLOT(reject()));
    connect(_folder, SIGNAL(textChanged(QString)), this, SLOT(updateSummary()));
    for (QWidget *box : {static_cast<QWidget *>(_width), static_cast<QWidget *>(_height),
                         static_cast<QWidget *>(_rate)})
        connect(box, SIGNAL(valueChanged(int)), this, SLOT(updateSummary()));
    for (DateTimeEdit *edit : {_from, _to})
        connect(edit, SIGNAL(dateTimeChanged(QDateTime)), this, SLOT(updateSummary()));
    connect(_step, SIGNAL(valueChanged(double)), this, SLOT(updateSummary()));
    connect(_unit, SIGNAL(currentIndexChanged(int)), this, SLOT(updateSummary()));
    updateSummary();
}

QSpinBox *FilmDialog::makeBox(int smallest, int largest, int value)
{
    auto *box = new QSpinBox;
    box->setRange(smallest, largest);
    box->setValue(value);
    return box;
}

DateTimeEdit *FilmDialog::makeTime(const Core::Time &time)
{
    auto *edit = new DateTimeEdit;
    // Inputs take no earlier ones.
    edit->setMinimumDate(QDate(100, 1, 1));
    edit->setDateTime(QDateTime::fromMSecsSinceEpoch(time.usecs() / 1000, Qt::UTC));
    return edit;
}

FilmPlan FilmDialog::plan() const
{
    FilmPlan plan;
    plan.folder = _folder->text().trimmed();
    plan.size = QSize(_width->value(), _height->value());
    plan.framesPerSecond = _rate->value();
    plan.from = timeOf(_from->dateTime());
    plan.to = timeOf(_to->dateTime());
    plan.perFrame = Core::TimeSpan(_step->value() * _unit->currentData().toInt());
    plan.makesFilm = _film->isChecked();
    return plan;
}

void FilmDialog::updateSummary()
{
    const FilmPlan plan = this->plan();
    const QString problem = problemOf(plan);
    _buttons->button(QDialogButtonBox::Save)->setEnabled(problem.isEmpty());
    const int count = frameCount(plan);
    _summary->setText(problem.isEmpty() ? tr("%1 pictures, %2 seconds of film")
                                              .arg(count)
                                              .arg(count / double(plan.framesPerSecond), 0, 'f', 1)
                                        : problem);
}

void FilmDialog::askForFolder()
{
    const QString folder =
        QFileDialog::getExistingDirectory(this, tr("Folder of the pictures"), exportFolder());
    if (!folder.isEmpty())
        _folder->setText(folder);
}

/** The next export begins beside this one. */
void FilmDialog::accept()
{
    setExportFolder(QFileInfo(plan().folder).absolutePath());
    QDialog::accept();
}

} // namespace Workbench
