// SPDX-License-Identifier: LGPL-3.0-or-later

#include "filtertuning.h"

#include "filterbox.h"
#include "frequencyaxis.h"
#include "rowfilters.h"

#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/traceview.h>

#include <QAction>

#include <cmath>
#include <utility>

namespace Workbench {

namespace {

/** Rows that take longer are given the next filter without having shown the one before. */
constexpr int LongestWait = 100;
const double ThirdOfAnOctave = std::pow(2, 1.0 / 3);
/** For each of two corners. */
const double SixthOfAnOctave = std::pow(2, 1.0 / 6);

} // namespace

FilterTuning::FilterTuning(FilterBox *box, RowFilters *filters, Norvu::Gui::TraceView *view,
                           QWidget *parent)
    : QObject(parent), _box(box), _filters(filters), _axis(new FrequencyAxis(parent)),
      _axisAction(new QAction(Norvu::FontAwesome5::iconSolid(Norvu::FontAwesome5::chSlidersH),
                              tr("Filter &corners"), this))
{
    _axis->hide();
    _axisAction->setCheckable(true);
    _axisAction->setShortcut(tr("Ctrl+Shift+F"));
    _axisAction->setToolTip(tr("Shows a frequency axis to move corners on (Ctrl+Shift+F)"));
    addCornerAction(tr("Band &down a third of an octave"), tr(","), &FilterCorners::shifted,
                    1 / ThirdOfAnOctave);
    addCornerAction(tr("Band &up a third of an octave"), tr("."), &FilterCorners::shifted,
                    ThirdOfAnOctave);
    addCornerAction(tr("&Narrower band"), tr("Ctrl+,"), &FilterCorners::widened,
                    1 / SixthOfAnOctave);
    addCornerAction(tr("&Wider band"), tr("Ctrl+."), &FilterCorners::widened, SixthOfAnOctave);
    _wait.setSingleShot(true);

    connect(_axisAction, SIGNAL(toggled(bool)), this, SLOT(showAxis(bool)));
    connect(_axis, SIGNAL(cornerMoved(int, double)), this, SLOT(moveCorner(int, double)));
    connect(_axis, SIGNAL(bandDrawn(double, double)), this, SLOT(drawBand(double, double)));
    connect(_axis, SIGNAL(left()), this, SIGNAL(left()));
    connect(_box, SIGNAL(edited()), this, SLOT(updateAxis()));
    connect(_box, SIGNAL(filterAdjusted(QString)), this, SLOT(want(QString)));
    connect(_box, SIGNAL(filterChanged(QString)), this, SLOT(forgetWanted()));
    connect(_filters, SIGNAL(misfits(QStringList)), this, SLOT(updateAxis()));
    connect(view, SIGNAL(layoutOrContentChanged()), this, SLOT(updateAxis()));
    connect(view, SIGNAL(filteringProgress(int, int)), this, SLOT(noteProgress(int, int)));
    connect(&_wait, SIGNAL(timeout()), this, SLOT(send()));
}

void FilterTuning::addCornerAction(const QString &text, const QString &key,
                                   QString (FilterCorners::*change)(double, double) const,
                                   double factor)
{
    auto *action = new QAction(text, this);
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, [this, change, factor] {
        const FilterCorners before = corners();
        adjust(before, (before.*change)(factor, nyquist()));
    });
    _cornerActions.append(action);
}

FilterCorners FilterTuning::corners() const
{
    return {_box->text(), _box->cursorPosition()};
}

/** The highest of all rows: those that it doesn't suit stay raw. */
double FilterTuning::nyquist() const
{
    const std::set<double> rates = _filters->samplingFrequencies();
    return rates.empty() ? 0 : *rates.rbegin() / 2;
}

void FilterTuning::showAxis(bool show)
{
    _axis->setVisible(show);
    updateAxis();
    if (show && _axis->window()->isActiveWindow())
        _axis->setFocus();
}

void FilterTuning::updateAxis()
{
    if (!_axis->isHidden())
        _axis->setContent(corners(), _filters->samplingFrequencies());
}

void FilterTuning::moveCorner(int corner, double frequency)
{
    const FilterCorners before = corners();
    adjust(before, before.moved(corner, frequency, nyquist()));
}

void FilterTuning::drawBand(double one, double other)
{
    const FilterCorners before = corners();
    adjust(before, before.withBand(one, other, nyquist()));
}

void FilterTuning::adjust(const FilterCorners &before, const QString &text)
{
    if (text != before.text())
        _box->adjust(text, before.cursorIn(text));
}

// One filter at a time

void FilterTuning::want(const QString &text)
{
    _wanted = text;
    _isWanted = true;
    if (!_isFiltering && !_wait.isActive())
        send();
    else if (!_wait.isActive())
        _wait.start(LongestWait);
}

void FilterTuning::forgetWanted()
{
    _isWanted = false;
    _wait.stop();
}

void FilterTuning::noteProgress(int done, int total)
{
    _isFiltering = done < total;
    // Not while the view is telling of the rows that are through.
    if (!_isFiltering && _isWanted)
        _wait.start(0);
}

void FilterTuning::send()
{
    if (std::exchange(_isWanted, false))
        emit filterWanted(_wanted);
}

} // namespace Workbench
