// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "eventfacts.h"

#include <QHash>
#include <QObject>
#include <QVector>

namespace Workbench {

/** The events that the list has loaded, for panels that show them in other ways. */
class ShownEvents : public QObject
{
    Q_OBJECT

public:
    explicit ShownEvents(QObject *parent = nullptr);

    /** In ascending order of time; those without a time come first. */
    const QVector<EventFacts> &all() const { return _events; }
    /** The event of a public id; null if it isn't shown. */
    const EventFacts *find(const QString &publicID) const;
    /** How many have come before a time, or until it; those without a time are among them, which
     *  so is the index of the first event that came later. */
    int countBefore(const Tellarix::Core::Time &time) const;
    int countUntil(const Tellarix::Core::Time &time) const;
    /** How many are without a time. */
    int timelessCount() const { return countUntil(Tellarix::Core::Time()); }
    /** In any order. */
    void set(QVector<EventFacts> events);

signals:
    void changed();

private:
    QVector<EventFacts> _events;
    mutable QHash<QString, int> _indices; /**< filled at the first question */
};

} // namespace Workbench
