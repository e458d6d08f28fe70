// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panel.h"
#include "panels.h"

#include <functional>

namespace Workbench {

/** A panel with what it gives the window, asked for once. */
struct PanelParts
{
    Panel *panel;
    QList<QToolBar *> toolBars;
    QList<QMenu *> menus;
    QList<QAction *> fileActions;
    QList<QAction *> viewActions;
    QList<QAction *> openActions;
    QStringList fileFilters;
};

/**
 * The panels of a window, in the order of registration.
 *
 * Those of plug-ins may throw: one that does so while it is made is left out, later it loses what
 * it was asked for. Either is told, and costs the others nothing.
 */
class PanelSet
{
public:
    explicit PanelSet(Bench *bench);
    /** Panels go before the bench that they share, and before those that they were made after. */
    ~PanelSet();

    PanelSet(const PanelSet &) = delete;
    PanelSet &operator=(const PanelSet &) = delete;

    /** Makes a panel of each kind, but for those whose name is empty, @p takenName or another's:
     *  sessions and pictures of two with one name would overwrite each other. */
    void make(const PanelRegistry &registry, const QString &takenName);

    const QVector<PanelParts> &parts() const { return _parts; }

    /**
     * Has a panel do something.
     * @param failure  what can be said of it if it throws, e.g. "it can't restore its session"
     * @return false if it has thrown, which is told
     */
    bool call(const Panel *panel, const QString &failure, const std::function<void()> &task) const;

private:
    Panel *makeOne(const PanelRegistry::Maker &make, const QString &takenName) const;
    bool isFreeName(const QString &name, const QString &takenName) const;
    void ask(Panel *panel);
    void tell(const QString &problem) const;

    Bench *_bench;
    QVector<PanelParts> _parts;
};

} // namespace Workbench
