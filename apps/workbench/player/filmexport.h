// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "filmplan.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class QPainter;

namespace Workbench {

class Bench;
class Task;

/**
 * Writes a replay as pictures of the map, one in each turn of the event loop, and leaves the film
 * of them to a job. It is a task that can be cancelled; pictures that are there by then stay.
 *
 * It moves the time of the selection along, and back again. It deletes itself when it has ended.
 */
class FilmExport : public QObject
{
    Q_OBJECT

public:
    FilmExport(Bench *bench, const FilmPlan &plan, QObject *parent);
    ~FilmExport() override;

    /** Begins; a plan that can't be carried out ends at once, with the cause told. */
    void start();

public slots:
    void cancel();

signals:
    void ended();

private slots:
    void writeNext();

private:
    void end(const QString &problem);
    void makeFilm();
    void draw(QPainter &painter) const;

    Bench *_bench;
    FilmPlan _plan;
    QPointer<Task> _task;
    QTimer _timer;
    Tellarix::Core::Time _timeBefore;
    int _next{0};
    bool _hasEnded{false};
};

} // namespace Workbench
