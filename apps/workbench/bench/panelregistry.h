// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QVector>

#include <functional>

namespace Workbench {

class Bench;
class Panel;

/** The kinds of panels that a window gets, in order: those of the workbench, then of plug-ins. */
class PanelRegistry
{
public:
    using Maker = std::function<Panel *(Bench *)>;

    void add(const Maker &maker) { _makers.append(maker); }
    /** Adds a class that is made from a bench. */
    template <typename T>
    void add()
    {
        add([](Bench *bench) -> Panel * { return new T(bench); });
    }

    const QVector<Maker> &makers() const { return _makers; }

private:
    QVector<Maker> _makers;
};

} // namespace Workbench
