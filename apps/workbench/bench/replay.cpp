// SPDX-License-Identifier: LGPL-3.0-or-later

#include "replay.h"

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

double opacityAt(const Core::Time &moment, const Core::Time &originTime, const Core::TimeSpan &fade)
{
    if (moment < originTime)
        return 0;
    if (fade <= Core::TimeSpan())
        return 1;
    return std::max(0.0, 1 - (moment - originTime).length() / fade.length());
}

Replay::Replay(QObject *parent) : QObject(parent)
{}

void Replay::setOn(bool on)
{
    if (on == _isOn)
        return;
    _isOn = on;
    emit changed();
}

void Replay::setFade(const Core::TimeSpan &fade)
{
    const Core::TimeSpan wanted = std::max(fade, Core::TimeSpan());
    if (wanted == _fade)
        return;
    _fade = wanted;
    emit changed();
}

} // namespace Workbench
