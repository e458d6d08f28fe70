// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <QObject>

namespace Workbench {

/**
 * How much is to be seen of an event at a moment.
 *
 * @param fade  how long it is seen after its origin time; without a length for ever
 * @return from 1 at the origin time down to 0 where it has faded; 0 before
 */
double opacityAt(const Tellarix::Core::Time &moment, const Tellarix::Core::Time &originTime,
                 const Tellarix::Core::TimeSpan &fade);

/**
 * The replay of the shown events: while it is on, panels show what had come to pass at the time of
 * the selection, and everything while that is not valid.
 */
class Replay : public QObject
{
    Q_OBJECT

public:
    explicit Replay(QObject *parent = nullptr);

    bool isOn() const { return _isOn; }
    /** How long an event is seen; without a length for ever. */
    const Tellarix::Core::TimeSpan &fade() const { return _fade; }

public slots:
    void setOn(bool on);
    /** A negative length counts as none. */
    void setFade(const Tellarix::Core::TimeSpan &fade);

signals:
    /** It is on or off, or fades otherwise than before. */
    void changed();

private:
    bool _isOn{false};
    Tellarix::Core::TimeSpan _fade;
};

} // namespace Workbench
