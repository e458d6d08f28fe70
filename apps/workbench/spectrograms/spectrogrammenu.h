#pragma once

#include <QMenu>

namespace Workbench {

class Spectrograms;

/** Which rows show their spectrograms, and where. */
class SpectrogramMenu : public QMenu
{
    Q_OBJECT

public:
    SpectrogramMenu(Spectrograms *spectrograms, QWidget *parent);

private slots:
    void showState();

private:
    QAction *addToggle(const QString &text, const QString &shortcut, const char *slot);

    Spectrograms *_spectrograms;
    QAction *_all;
    QAction *_inFront;
    QAction *_filtered;
};

} // namespace Workbench
