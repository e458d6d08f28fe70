// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterdefinition.h>

#include <QObject>
#include <QStringList>

#include <set>
#include <string>

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;

/** The filter of all rows, as far as it fits each, and the units of what comes of it. */
class RowFilters : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    RowFilters(Bench *bench, Norvu::Gui::TraceView *view);

    /**
     * Filters all rows by a filter in its text form; an empty text takes the filter away. Rows with
     * a sampling frequency that the filter doesn't fit stay raw, draw palely, and say why.
     * @return one text for each sampling frequency that the filter doesn't fit
     */
    QStringList setFilter(const QString &text);
    /** Does so for one row, which has data. */
    void fit(Norvu::Gui::Trace *row);
    /** The different sampling frequencies of all rows. */
    std::set<double> samplingFrequencies() const;

public slots:
    /** To be called when filtering goes on or off. */
    void update();
    /** Shows physical units where one gain is known for all of a row, and counts elsewhere. */
    void updateUnits();

signals:
    /** A row has, or has no longer, a reason why it isn't filtered. */
    void fitted(Norvu::Gui::Trace *row);
    /** One text for each sampling frequency that the filter doesn't fit. */
    void misfits(const QStringList &messages);

private:
    QStringList problems() const;
    bool updateUnit(Norvu::Gui::Trace *row) const;

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    Tellarix::Math::Filtering::FilterDefinition _filter;
    std::string _filterText;
};

} // namespace Workbench
