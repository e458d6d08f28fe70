// SPDX-License-Identifier: LGPL-3.0-or-later

#include "streambindings_p.h"

namespace Norvu {
namespace Gui {

void StreamBindings::bind(const std::string &id, Trace *row, int slot)
{
    _bindings.insert(id, qMakePair(row, slot));
}

bool StreamBindings::unbind(const std::string &id)
{
    return _bindings.remove(id) > 0;
}

void StreamBindings::unbind(const Trace *row)
{
    for (auto binding = _bindings.begin(); binding != _bindings.end();) {
        if (binding->first == row)
            binding = _bindings.erase(binding);
        else
            ++binding;
    }
}

void StreamBindings::clear()
{
    _bindings.clear();
}

Trace *StreamBindings::find(const std::string &id, int *slot) const
{
    const auto binding = _bindings.constFind(id);
    if (binding == _bindings.constEnd())
        return nullptr;

    if (slot)
        *slot = binding->second;
    return binding->first;
}

QList<QPair<std::string, int>> StreamBindings::of(const Trace *row) const
{
    QList<QPair<std::string, int>> bindings;
    for (auto binding = _bindings.constBegin(); binding != _bindings.constEnd(); ++binding) {
        if (binding->first == row)
            bindings.append(qMakePair(binding.key(), binding->second));
    }
    return bindings;
}

} // namespace Gui
} // namespace Norvu
