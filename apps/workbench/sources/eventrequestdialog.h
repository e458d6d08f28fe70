// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "datasource.h"

#include <tellarix/client/remote/fdsnservice.h>

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QPushButton;

namespace Norvu {
namespace Gui {
class DateTimeEdit;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;

/** What an event service is asked as one text, "fdsnws+https://HOST/fdsnws/event/1/query?...".
 *  @param service  an address of web services, perhaps with words of its own */
QString eventRequestText(const QString &service, const Tellarix::IO::FdsnEventQuery &query);

/** Asks which events of which source are wanted: of a time, a region, and magnitudes. */
class EventRequestDialog : public QDialog
{
    Q_OBJECT

public:
    /** @param sources  of which those with an event service are offered
     *  @param name     of the one that is chosen at first, if it is among them */
    EventRequestDialog(Bench *bench, const QVector<DataSource> &sources, const QString &name,
                       QWidget *parent = nullptr);

    QString request() const;
    /** Whether the events are to be stored, not only looked at. */
    bool isStored() const;

private slots:
    void check();
    void setWorld();
    void setMapRegion();

private:
    QDoubleSpinBox *makeBox(double from, double to, double value);
    QDoubleSpinBox *makeMagnitudeBox(double value);
    QLabel *labelOf(const QString &text, QWidget *buddy);
    void addTimes(QFormLayout *layout);
    void addRegion(QFormLayout *layout);
    Tellarix::IO::FdsnEventQuery query() const;

    Bench *_bench;
    QVector<DataSource> _sources;
    QComboBox *_source;
    Norvu::Gui::DateTimeEdit *_from;
    Norvu::Gui::DateTimeEdit *_to;
    QDoubleSpinBox *_least;
    QDoubleSpinBox *_most;
    QDoubleSpinBox *_south;
    QDoubleSpinBox *_north;
    QDoubleSpinBox *_west;
    QDoubleSpinBox *_east;
    QCheckBox *_stored;
    QLabel *_problem;
    QPushButton *_fetch;
};

} // namespace Workbench
