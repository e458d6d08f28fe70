// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QMenu>

class QActionGroup;

namespace Workbench {

class Spectrograms;

/** Which rows show their spectrograms, and where. */
class SpectrogramMenu : public QMenu
{
    Q_OBJECT

public:
    SpectrogramMenu(Spectrograms *spectrograms, QWidget *parent);

    /** Switches the selected rows, for other menus. */
    QAction *selectedAction() const { return _selected; }

private slots:
    void showState();
    void setPlace(QAction *action);
    void setNextPlace();

private:
    void addPlaces();
    QAction *addToggle(const QString &text, const QString &shortcut, const char *slot);

    Spectrograms *_spectrograms;
    QAction *_all;
    QAction *_selected;
    QActionGroup *_places;
    QAction *_filtered;
};

} // namespace Workbench
