// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowlooks.h"

#include "bench/tracerows.h"
#include "rowdatakeys.h"
#include "rowmargins.h"
#include "rownames.h"

#include <norvu/gui/traceview.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QStringList>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** From so many rows on, header lines would take more room than traces. */
constexpr int ManyRows = 12;
constexpr int CompactPadding = 1;
constexpr int NormalRowHeight = 48;

/** Why a filter doesn't suit a row, in as few words as a name has room for. */
QString misfitText(const Trace &row)
{
    const Tellarix::RecordSequence *records = row.recordWidget()->records(0);
    return records && !records->isEmpty()
               ? RowLooks::tr("raw: Nyquist %1 Hz").arg(records->front()->samplingFrequency() / 2)
               : RowLooks::tr("raw");
}

} // namespace

RowLooks::RowLooks(TraceView *view, RowMargins *margins)
    : QObject(view), _view(view), _margins(margins), _names(new RowNames(view))
{}

void RowLooks::followCount()
{
    if (!_isCompactChosen)
        applyCompact(_view->count() >= ManyRows);
}

void RowLooks::setPaths(const QHash<QString, EventPath> &paths)
{
    if (paths == _paths)
        return;

    _paths = paths;
    dressAll();
    emit pathsChanged();
}

/** Sets the distance by which rows are sorted, and returns it as a text; empty without one. */
QString RowLooks::noteDistance(Trace *row) const
{
    const auto path = _paths.constFind(stationOf(*row));
    if (path == _paths.constEnd()) {
        if (row->data(Norvu::Gui::TraceDistance).isValid())
            row->setData(Norvu::Gui::TraceDistance, QVariant());
        return QString();
    }
    row->setData(Norvu::Gui::TraceDistance, path->distanceKm);
    return tr("%1 km").arg(path->distanceKm, 0, 'f', 1);
}

void RowLooks::dress(Trace *row)
{
    QString name = row->label();
    QStringList texts;
    const QString distance = noteDistance(row);
    if (!distance.isEmpty()) {
        const double azimuth = _paths.value(stationOf(*row)).azimuth;
        texts.append(distance + "  " + tr("%1°").arg(azimuth, 0, 'f', 0));
        name += "  " + distance;
    }

    // Rows without a header have room for the reason alone; the pointer asks for the rest.
    const QString misfit = row->data(MisfitKey).toString();
    if (!misfit.isEmpty())
        texts.append(misfit);
    row->setLabel(row->label()); // takes a description away
    if (!texts.isEmpty())
        row->setDescription(texts.join("  ·  "));
    row->recordWidget()->setToolTip(_compact ? misfit : QString());

    _names->setName(row, misfit.isEmpty() ? name : row->label() + "  " + misfitText(*row));
    row->setHeaderVisible(!_compact);
    if (_compact)
        row->setVerticalPadding(CompactPadding, 0);
    else
        row->restoreVerticalSpacing();
}

void RowLooks::dressAll()
{
    _view->changeItems([this] {
        for (Trace *row : _view->items())
            dress(row);
    });
}

void RowLooks::setCompact(bool compact)
{
    _isCompactChosen = true;
    applyCompact(compact);
}

void RowLooks::setOverviewRoom(int pixels)
{
    _names->setForeignWidth(pixels);
}

void RowLooks::applyCompact(bool compact)
{
    if (compact == _compact)
        return;

    _compact = compact;
    _names->setShown(compact);
    _margins->setRowHeight(compact ? _view->fontMetrics().height() + 2 * Trace::Padding()
                                   : NormalRowHeight);
    dressAll();
    emit compactChanged(compact);
}

} // namespace Workbench
