// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QMenu>
#include <QStringList>

class QActionGroup;
class QSettings;

namespace Workbench {

class LiveFollow;
class LiveSources;

/** Everything about live data: whether the view goes along, how long rows keep them, and which
 *  sources there are, each with an entry that ends it. */
class LiveMenu : public QMenu
{
    Q_OBJECT

public:
    LiveMenu(LiveSources *sources, LiveFollow *follow, QWidget *parent);

    void saveState(QSettings &settings) const;
    void restoreState(QSettings &settings);
    /** Those that are to be opened again in the next session. */
    QStringList sourcesToRemember() const;
    /** Those that were to be opened again, as restoreState() has found them. */
    const QStringList &rememberedSources() const { return _remembered; }

private slots:
    void fill();
    void applyLength();

private:
    void addLengths();

    LiveSources *_sources;
    QActionGroup *_lengths;
    QAction *_again;
    QAction *_endAll;
    QList<QAction *> _entries; /**< of sources */
    QStringList _remembered;
};

} // namespace Workbench
