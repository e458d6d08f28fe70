// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrogrampanel.h"

#include "bench/bench.h"
#include "bench/historybox.h"
#include "bench/tracerows.h"
#include "gradientpanel.h"
#include "gradientsheet.h"
#include "spectrogrammenu.h"
#include "spectrograms.h"

#include <tellarix/qt/scheme.h>

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>

namespace Workbench {

namespace {

constexpr auto HistoryKey = "Workbench/spectrogramAxes";
constexpr auto SettingsGroup = "spectrograms";
constexpr int QuietRounds = 3;

const QStringList &presets()
{
    static const QStringList texts{
        "periods_log(0.1,30,10,64)", "periods_log(0.05,2,8,48)", "periods_log(1,100,10,64)",
        "periods(0.1,5,16,48)",      "freqs_log(0.1,20,10,64)",  "freqs(0.5,20,16,64)",
    };
    return texts;
}

QString numberText(double value)
{
    return QString::number(value, 'g', 4);
}

} // namespace

SpectrogramPanel::SpectrogramPanel(Bench *bench)
    : Panel(bench,
            {"spectrogram", tr("Spectrogram"), tr("Spectrogram se&ttings"), tr("Ctrl+Shift+G")}),
      _spectrograms(new Spectrograms(bench->rows()->view())),
      _axis(new HistoryBox(presets(), HistoryKey, this)), _problem(new QLabel(this)),
      _mode(new QComboBox(this)), _lower(new QLineEdit(this)), _upper(new QLineEdit(this)),
      _logarithmic(new QCheckBox(tr("&Logarithmic"), this)), _gradient(new GradientPanel(this))
{
    auto *layout = new QVBoxLayout(this);
    auto *form = new QFormLayout;
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    createAxis(form);
    createRange(form);
    layout->addLayout(form);
    layout->addWidget(_problem); // A form would give it the height of a single line, or two.
    layout->addWidget(_gradient);
    layout->addStretch();

    connect(_gradient, SIGNAL(changed()), this, SLOT(applyGradient()));
    connect(_spectrograms, SIGNAL(colorsChanged()), this, SLOT(showRange()));
    connect(_spectrograms, SIGNAL(rangeFitted()), this, SLOT(showFittedRange()));
    connect(_spectrograms, SIGNAL(shownChanged()), this, SLOT(showProblems()));
    connect(this, SIGNAL(problem(QString)), bench, SLOT(showStatus(QString)));
    setFocusProxy(_axis);
    createMenu();
    bench->rows()->setAddition(_spectrograms);
    bench->rows()->addMenuActions({_menu->selectedAction(), toggleAction()});
}

void SpectrogramPanel::createMenu()
{
    _menu = new SpectrogramMenu(_spectrograms, this);
    _menu->addSeparator();
    _menu->addAction(toggleAction());
}

QList<QMenu *> SpectrogramPanel::menus() const
{
    return {_menu};
}

void SpectrogramPanel::createAxis(QFormLayout *form)
{
    _axis->setEditText(_spectrograms->axisText());
    _axis->lineEdit()->setPlaceholderText("periods_log(0.1,30,10,64)");
    _axis->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    _axis->setWhatsThis(tr("name(lower,upper,divisions,bands), where the name is periods_log, "
                           "periods, freqs_log or freqs"));
    _problem->setWordWrap(true);
    _problem->hide();
    form->addRow(tr("&Axis:"), _axis);
    connect(_axis, SIGNAL(entered(QString)), this, SLOT(applyAxis(QString)));
}

void SpectrogramPanel::createRange(QFormLayout *form)
{
    _mode->addItems({tr("Each row by itself"), tr("One for all rows"), tr("Fixed")});
    _mode->setToolTip(tr("How the range of amplitudes that the colours span is found"));
    _logarithmic->setChecked(_spectrograms->colorRange().logarithmic);
    _lower->setToolTip(tr("Amplitude of the first colour"));
    _upper->setToolTip(tr("Amplitude of the last colour"));

    auto *ends = new QHBoxLayout;
    ends->addWidget(_lower);
    ends->addWidget(new QLabel(tr("to"), this));
    ends->addWidget(_upper);
    form->addRow(tr("&Range:"), _mode);
    form->addRow(QString(), ends);
    form->addRow(QString(), _logarithmic);

    connect(_mode, SIGNAL(activated(int)), this, SLOT(applyRange()));
    connect(_logarithmic, SIGNAL(toggled(bool)), this, SLOT(applyRange()));
    connect(_lower, SIGNAL(editingFinished()), this, SLOT(applyRange()));
    connect(_upper, SIGNAL(editingFinished()), this, SLOT(applyRange()));
    showRange();
}

void SpectrogramPanel::applyAxis(const QString &text)
{
    const QString message = _spectrograms->setAxis(text);
    _axis->showProblem(message);
    _axisProblem = message.isEmpty() ? message : tr("Axis of spectrograms: %1").arg(message);
    if (message.isEmpty())
        _axis->remember(text);
    showProblems();
}

/** What is wrong with inputs stands there until they are right; then what doesn't fit the data. */
void SpectrogramPanel::showProblems()
{
    QStringList problems{_axisProblem, _rangeProblem};
    problems.removeAll(QString());
    showProblem((problems.isEmpty() ? _spectrograms->rateProblems() : problems).join("\n"));
}

void SpectrogramPanel::showProblem(const QString &message)
{
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText,
                    Tellarix::Gui::problemColor(colors.color(QPalette::Window)));
    _problem->setPalette(colors);
    _problem->setText(message);
    _problem->setVisible(!message.isEmpty());
    emit problem(message);
}

/** Fills a range from the inputs and tells what is wrong with them. */
QString SpectrogramPanel::readRange(ColorRange &range) const
{
    range.mode = static_cast<ColorRange::Mode>(_mode->currentIndex());
    range.logarithmic = _logarithmic->isChecked();
    if (range.mode != ColorRange::Fixed)
        return QString();

    for (const auto &end : {qMakePair(_lower, &range.lower), qMakePair(_upper, &range.upper)}) {
        bool ok = false;
        *end.second = end.first->text().toDouble(&ok);
        if (!ok)
            return tr("Range of the colours: \"%1\" is no number").arg(end.first->text());
    }
    if (range.isValid())
        return QString();
    return range.lower < range.upper
               ? tr("Range of the colours: a logarithmic one has to begin above 0")
               : tr("Range of the colours: %1 is not below %2").arg(_lower->text(), _upper->text());
}

void SpectrogramPanel::applyRange()
{
    ColorRange range;
    _rangeProblem = readRange(range);
    if (_rangeProblem.isEmpty())
        _spectrograms->setColorRange(range);
    showProblems();
    showRange();
}

/** The ends that are in force, unless the user sets them. */
void SpectrogramPanel::showRange()
{
    const bool isFixed = _mode->currentIndex() == ColorRange::Fixed;
    _lower->setEnabled(isFixed);
    _upper->setEnabled(isFixed);
    if (isFixed)
        return;
    const QPair<double, double> range = _spectrograms->currentRange();
    if (!(range.first < range.second))
        return;
    _lower->setText(numberText(range.first));
    _upper->setText(numberText(range.second));
}

void SpectrogramPanel::showFittedRange()
{
    const ColorRange &range = _spectrograms->colorRange();
    _mode->setCurrentIndex(range.mode);
    _lower->setText(numberText(range.lower));
    _upper->setText(numberText(range.upper));
    _rangeProblem.clear();
    showProblems();
    showRange();
}

void SpectrogramPanel::applyGradient()
{
    _spectrograms->setGradient(_gradient->gradient(), _gradient->isDiscrete());
}

void SpectrogramPanel::restoreState(QSettings &settings)
{
    settings.beginGroup(SettingsGroup);
    _axis->restoreHistory();
    const QString axis = settings.value("axis").toString();
    if (!axis.isEmpty() && _spectrograms->setAxis(axis).isEmpty())
        _axis->setEditText(axis);
    _gradient->restoreSettings(settings);
    applyGradient();

    _mode->setCurrentIndex(qBound(0, settings.value("range").toInt(), _mode->count() - 1));
    _lower->setText(settings.value("lower", "1").toString());
    _upper->setText(settings.value("upper", "1000").toString());
    _logarithmic->setChecked(settings.value("logarithmic", true).toBool());
    ColorRange range;
    if (!readRange(range).isEmpty())
        _mode->setCurrentIndex(ColorRange::Automatic);
    applyRange();
    const int place = settings.value("place").toInt();
    _spectrograms->setPlace(static_cast<SpectrogramPlace>(
        qBound(0, place, static_cast<int>(SpectrogramPlace::Instead))));
    settings.endGroup();
}

void SpectrogramPanel::saveState(QSettings &settings) const
{
    settings.beginGroup(SettingsGroup);
    _axis->saveHistory();
    settings.setValue("axis", _spectrograms->axisText());
    settings.setValue("range", _mode->currentIndex());
    settings.setValue("lower", _lower->text());
    settings.setValue("upper", _upper->text());
    settings.setValue("logarithmic", _logarithmic->isChecked());
    settings.setValue("place", static_cast<int>(_spectrograms->place()));
    _gradient->saveSettings(settings);
    settings.endGroup();
}

QVector<PanelPicture> SpectrogramPanel::pictures()
{
    return {{"spectrogram.png", windowPicture(SpectrogramPlace::Behind)},
            {"spectrogram-above.png", windowPicture(SpectrogramPlace::Above)},
            {"spectrogram-instead.png", windowPicture(SpectrogramPlace::Instead)},
            {"gradients.png", gradientSheet(palette(), devicePixelRatioF())},
            {"gradient-editor.png",
             _gradient->grab(QRect(0, 0, _gradient->width(), _gradient->sizeHint().height()))}};
}

/** The window with the spectrograms of all rows. */
QPixmap SpectrogramPanel::windowPicture(SpectrogramPlace place)
{
    const SpectrogramPlace before = _spectrograms->place();
    _spectrograms->setPlace(place);
    _spectrograms->setAllShown(true);
    // Rows say what they lack when they are painted, and get other sizes as their scales need them.
    for (int quiet = 0; quiet < QuietRounds; ++quiet) {
        window()->grab();
        QCoreApplication::processEvents();
        if (_spectrograms->isBusy())
            quiet = 0;
    }
    const QPixmap picture = window()->grab();
    _spectrograms->setAllShown(false);
    _spectrograms->setPlace(before);
    return picture;
}

} // namespace Workbench
