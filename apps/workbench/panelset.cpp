// SPDX-License-Identifier: LGPL-3.0-or-later

#include "panelset.h"

#include "bench/bench.h"

#include <QCoreApplication>

#include <algorithm>
#include <exception>
#include <memory>

namespace Workbench {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::PanelSet", text);
}

/** Runs a task.
 *  @param cause  set to what it throws, if that says anything
 *  @return false if it throws */
bool runs(const std::function<void()> &task, QString *cause)
{
    try {
        task();
        return true;
    } catch (const std::exception &exception) {
        *cause = ": " + QString::fromUtf8(exception.what());
    } catch (...) {
    }
    return false;
}

} // namespace

PanelSet::PanelSet(Bench *bench) : _bench(bench)
{}

PanelSet::~PanelSet()
{
    std::for_each(_parts.crbegin(), _parts.crend(),
                  [](const PanelParts &parts) { delete parts.panel; });
}

void PanelSet::make(const PanelRegistry &registry, const QString &takenName)
{
    for (const PanelRegistry::Maker &maker : registry.makers()) {
        if (Panel *panel = makeOne(maker, takenName))
            _parts.append({panel, {}, {}, {}, {}, {}, {}});
    }
    // Once all are there: what one gives may depend on others.
    const QVector<PanelParts> made = _parts;
    for (const PanelParts &parts : made)
        ask(parts.panel);
}

/** A panel; null, with the cause told, if it can't be made or has no name of its own. */
Panel *PanelSet::makeOne(const PanelRegistry::Maker &make, const QString &takenName) const
{
    std::unique_ptr<Panel> panel;
    QString cause;
    if (!runs([&] { panel.reset(make(_bench)); }, &cause))
        cause = tr("it could not be made") + cause;
    else if (!panel || isFreeName(panel->description().name, takenName))
        return panel.release();
    else
        cause = tr("\"%1\" is no name of its own").arg(panel->description().name);
    tell(tr("A panel is left out: %1").arg(cause));
    return nullptr;
}

bool PanelSet::isFreeName(const QString &name, const QString &takenName) const
{
    const auto hasName = [&](const PanelParts &parts) {
        return parts.panel->description().name == name;
    };
    return !name.isEmpty() && name != takenName &&
           std::none_of(_parts.cbegin(), _parts.cend(), hasName);
}

/** Asks a panel for its parts; leaves it out if it throws. */
void PanelSet::ask(Panel *panel)
{
    const auto parts = std::find_if(_parts.begin(), _parts.end(), [&](const PanelParts &candidate) {
        return candidate.panel == panel;
    });
    QString cause;
    const bool isWhole = runs(
        [&] {
            parts->toolBars = panel->toolBars();
            parts->menus = panel->menus();
            parts->fileActions = panel->menuActions(Panel::Menu::File);
            parts->openActions = panel->menuActions(Panel::Menu::Open);
            parts->viewActions = panel->menuActions(Panel::Menu::View);
            parts->fileFilters = panel->fileFilters();
        },
        &cause);
    if (isWhole)
        return;
    tell(tr("The panel \"%1\" is left out: it can't name its menus and tool bars%2")
             .arg(panel->description().title, cause));
    _parts.erase(parts);
    delete panel;
}

bool PanelSet::call(const Panel *panel, const QString &failure,
                    const std::function<void()> &task) const
{
    QString cause;
    if (runs(task, &cause))
        return true;
    tell(tr("The panel \"%1\": %2%3").arg(panel->description().title, failure, cause));
    return false;
}

void PanelSet::tell(const QString &problem) const
{
    qWarning("[WORKBENCH] %s", qUtf8Printable(problem));
    _bench->tell({problem});
}

} // namespace Workbench
