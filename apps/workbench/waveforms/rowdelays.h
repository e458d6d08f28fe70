// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QObject>
#include <QPointer>
#include <QSet>

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class RowNames;
class StreamStates;

/** How old the last sample of each live row is, beside its name; the name is pale where it is too
 *  old. */
class RowDelays : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    RowDelays(Norvu::Gui::TraceView *view, RowNames *names, const StreamStates *states);

public slots:
    /** Called once a second while anything is live. */
    void update();

private:
    void show(Norvu::Gui::Trace *row, const QString &delay, bool isStale, const QString &told);

    Norvu::Gui::TraceView *_view;
    RowNames *_names;
    const StreamStates *_states;
    QSet<Norvu::Gui::Trace *> _rows; /**< that show one; some may be gone */
};

} // namespace Workbench
