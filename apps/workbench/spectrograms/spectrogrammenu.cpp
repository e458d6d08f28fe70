// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrogrammenu.h"

#include "spectrograms.h"

namespace Workbench {

SpectrogramMenu::SpectrogramMenu(Spectrograms *spectrograms, QWidget *parent)
    : QMenu(tr("&Spectrogram"), parent), _spectrograms(spectrograms)
{
    _all = addToggle(tr("Spectrograms of &all rows"), tr("S"), SLOT(setAllShown(bool)));
    _selected = addAction(tr("Spectrograms of &selected rows on or off"), _spectrograms,
                          SLOT(toggleSelected()), tr("Shift+S"));
    addSeparator();
    _inFront = addToggle(tr("In &front of the traces"), tr("Ctrl+Shift+S"), SLOT(setInFront(bool)));
    _filtered = addToggle(tr("Of the fi&ltered traces"), QString(), SLOT(useFilteredRecords(bool)));

    connect(_spectrograms, SIGNAL(shownChanged()), this, SLOT(showState()));
    connect(_spectrograms, SIGNAL(placeChanged()), this, SLOT(showState()));
    connect(this, SIGNAL(aboutToShow()), this, SLOT(showState()));
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
    _inFront->setChecked(_spectrograms->isInFront());
    _filtered->setChecked(_spectrograms->areFilteredRecordsUsed());
}

} // namespace Workbench
