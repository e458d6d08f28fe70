// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QPoint;
class QWidget;

namespace Norvu {
namespace Gui {
class Trace;
} // namespace Gui
} // namespace Norvu

namespace Tellarix {
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

/** What another panel adds to rows of waveforms: how traces are drawn, and what stands beside them.
 */
class RowAddition : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /** The widget for the traces of a new row, which takes it over. */
    virtual Tellarix::Gui::RecordWidget *makeTraces() const = 0;
    /** Called with new rows of the view, whose traces have their data. */
    virtual void adopt(const QList<Norvu::Gui::Trace *> &rows) = 0;
    /** Whether any row shows what is added to it; only then is there room for scales. */
    virtual bool isAnyShown() const = 0;
    /** Height that rows need meanwhile, in pixels. */
    virtual int rowHeight() const = 0;
    /** What stands at the right of a row, as wide as its size hint says or the widest one of all
     *  rows, also while it is hidden; null for a row whose traces it didn't make. */
    virtual QWidget *makeScale(Norvu::Gui::Trace *row, QWidget *parent) const = 0;
    /** What is under the pointer, which may be beyond the traces; empty if there is nothing. */
    virtual QString textAt(const Tellarix::Gui::RecordWidget *traces,
                           const QPoint &position) const = 0;
    /** Whether there is anything in the traces' place whose height is an amplitude. */
    virtual bool areAmplitudesShown(const Tellarix::Gui::RecordWidget *traces) const;
    /** Works out at once what of it belongs into the view but is put off while nobody sees it. */
    virtual void finish(Tellarix::Gui::RecordWidget *traces);
    /** Told when the unit of a row's samples, or their scale, is another. */
    virtual void followUnit(Norvu::Gui::Trace *row);

signals:
    /** It is shown in other rows than before, or scales need other room. */
    void changed();
};

} // namespace Workbench
