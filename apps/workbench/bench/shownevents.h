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
    /** In any order. */
    void set(QVector<EventFacts> events);

signals:
    void changed();

private:
    QVector<EventFacts> _events;
    mutable QHash<QString, int> _indices; /**< filled at the first question */
};

} // namespace Workbench
