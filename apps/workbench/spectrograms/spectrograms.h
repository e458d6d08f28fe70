// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "amplitudecolors.h"
#include "spectrogramplace.h"

#include "bench/rowaddition.h"

#include <norvu/gui/spectrogramsettings.h>

#include <QList>
#include <QStringList>
#include <QTimer>

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class SpectrogramRow;

/**
 * The spectrograms of a view's rows: which of them are shown, with which axis and colours.
 *
 * They are worked out for what is visible, row by row and piece by piece while the user interface
 * goes on. All together they take a quarter of the memory of the machine at most, unless told
 * otherwise; rows out of sight give theirs away first.
 */
class Spectrograms : public RowAddition
{
    Q_OBJECT

public:
    explicit Spectrograms(Norvu::Gui::TraceView *view);

    Tellarix::Gui::RecordWidget *makeTraces() const override;
    void adopt(const QList<Norvu::Gui::Trace *> &rows) override;
    bool isAnyShown() const override;
    int rowHeight() const override;
    QWidget *makeScale(Norvu::Gui::Trace *row, QWidget *parent) const override;
    QString textAt(const Tellarix::Gui::RecordWidget *traces,
                   const QPoint &position) const override;
    bool areAmplitudesShown(const Tellarix::Gui::RecordWidget *traces) const override;
    void finish(Tellarix::Gui::RecordWidget *traces) override;

    void followUnit(Norvu::Gui::Trace *row) override;

    void setShown(const QList<Norvu::Gui::Trace *> &rows, bool shown);
    bool isShown(const Norvu::Gui::Trace *row) const;
    bool areAllShown() const;

    /**
     * Sets the axis by its text form, e.g. "periods_log(0.1,100,10,64)".
     * @return why it can't be used, with everything as it was; empty if it can
     */
    QString setAxis(const QString &text);
    QString axisText() const { return _axisText; }
    /** One text for each sampling frequency that the axis doesn't fit. */
    QStringList rateProblems() const;

    void setGradient(const Tellarix::Gui::Gradient &gradient, bool discrete);
    /** Ignored if it is not valid. */
    void setColorRange(const ColorRange &range);
    const ColorRange &colorRange() const { return _range; }
    /** The range of the current row, or of the first one that is shown; from 0 to 0 while there is
     *  nothing. */
    QPair<double, double> currentRange() const;

    SpectrogramPlace place() const { return _place; }
    bool areFilteredRecordsUsed() const { return _filtered; }
    /** Bytes that all spectrograms may take together. */
    void setMemoryLimit(size_t bytes) { _memoryLimit = bytes; }
    /** True while there is something to work out. */
    bool isBusy() const { return _timer.isActive(); }

public slots:
    void setAllShown(bool shown);
    /** Switches the spectrograms of the selected rows, without any that of the current one. */
    void toggleSelected();
    void setPlace(Workbench::SpectrogramPlace place);
    /** Fixes the range of the colours to what the rows that are shown need; nothing happens while
     *  there is no picture. */
    void fitRange();
    void useFilteredRecords(bool use);

signals:
    /** Spectrograms of some rows were switched on or off. */
    void shownChanged();
    void placeChanged();
    /** The range was changed by fitRange(). */
    void rangeFitted();
    void axisChanged();
    void colorsChanged();

private slots:
    void workOn();
    void updateRows();
    void updateColors();

private:
    void adopt(SpectrogramRow *row);
    SpectrogramRow *rowOf(const Norvu::Gui::Trace *trace) const;
    void applyPlace(const QList<Norvu::Gui::Trace *> &rows);
    QList<SpectrogramRow *> wantedRows() const;
    size_t roomFor(const SpectrogramRow *row) const;
    QPair<double, double> sharedRange() const;

    Norvu::Gui::TraceView *_view;
    Norvu::Gui::SpectrogramSettings _axis;
    QString _axisText;
    Tellarix::Gui::Gradient _gradient;
    bool _discrete{false};
    ColorRange _range;
    size_t _memoryLimit;
    bool _shownInNewRows{false};
    SpectrogramPlace _place{SpectrogramPlace::Behind};
    bool _filtered{false};
    QTimer _timer; /**< runs while rows have something to work out */
    QTimer _rowsTimer;
};

} // namespace Workbench
