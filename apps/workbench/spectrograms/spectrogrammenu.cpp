// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrogrammenu.h"

#include "spectrograms.h"

#include <QActionGroup>

namespace Workbench {

SpectrogramMenu::SpectrogramMenu(Spectrograms *spectrograms, QWidget *parent)
    : QMenu(tr("&Spectrogram"), parent), _spectrograms(spectrograms)
{
    _all = addToggle(tr("Spectrograms of &all rows"), tr("S"), SLOT(setAllShown(bool)));
    _selected = addAction(tr("Spectrograms of &selected rows on or off"), _spectrograms,
                          SLOT(toggleSelected()), tr("Shift+S"));
    addSeparator();
    addPlaces();
    addSeparator();
    addAction(tr("Fit the &range of the colours"), _spectrograms, SLOT(fitRange()));
    _filtered = addToggle(tr("Of the fi&ltered traces"), QString(), SLOT(useFilteredRecords(bool)));

    connect(_spectrograms, SIGNAL(shownChanged()), this, SLOT(showState()));
    connect(_spectrograms, SIGNAL(placeChanged()), this, SLOT(showState()));
    connect(this, SIGNAL(aboutToShow()), this, SLOT(showState()));
}

void SpectrogramMenu::addPlaces()
{
    _places = new QActionGroup(this);
    for (const auto &[text, place] :
         {qMakePair(tr("A&bove the traces"), SpectrogramPlace::Above),
          qMakePair(tr("Be&hind the traces"), SpectrogramPlace::Behind),
          qMakePair(tr("&Instead of the traces"), SpectrogramPlace::Instead)}) {
        QAction *action = _places->addAction(text);
        action->setCheckable(true);
        action->setData(static_cast<int>(place));
        addAction(action);
    }
    connect(_places, SIGNAL(triggered(QAction *)), this, SLOT(setPlace(QAction *)));
    addAction(tr("&Next of these places"), this, SLOT(setNextPlace()), tr("Ctrl+Shift+S"));
}

void SpectrogramMenu::setPlace(QAction *action)
{
    _spectrograms->setPlace(static_cast<SpectrogramPlace>(action->data().toInt()));
}

void SpectrogramMenu::setNextPlace()
{
    showState();
    const QList<QAction *> places = _places->actions();
    setPlace(places[(places.indexOf(_places->checkedAction()) + 1) % places.size()]);
}

QAction *SpectrogramMenu::addToggle(const QString &text, const QString &shortcut, const char *slot)
{
    QAction *action = addAction(text);
    action->setCheckable(true);
    action->setShortcut(shortcut);
    connect(action, SIGNAL(triggered(bool)), _spectrograms, slot);
    return action;
}

void SpectrogramMenu::showState()
{
    _all->setChecked(_spectrograms->areAllShown());
    for (QAction *action : _places->actions())
        action->setChecked(action->data().toInt() == static_cast<int>(_spectrograms->place()));
    _filtered->setChecked(_spectrograms->areFilteredRecordsUsed());
}

} // namespace Workbench
