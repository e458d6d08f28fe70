// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QMap>
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

    /** Adds a kind of panel.
     *  @return its number, by which it is removed */
    int add(const Maker &maker)
    {
        _makers.insert(++_last, maker);
        return _last;
    }
    /** Adds a class that is made from a bench. */
    template <typename T>
    int add()
    {
        return add([](Bench *bench) -> Panel * { return new T(bench); });
    }
    void remove(int number) { _makers.remove(number); }

    QVector<Maker> makers() const { return _makers.values().toVector(); }

private:
    QMap<int, Maker> _makers;
    int _last{0};
};

} // namespace Workbench
