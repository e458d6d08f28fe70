// SPDX-License-Identifier: LGPL-3.0-or-later

#include "filmexport.h"

#include "bench/bench.h"
#include "bench/jobs.h"
#include "bench/mapview.h"
#include "bench/picture.h"
#include "bench/selection.h"
#include "bench/task.h"

#include <QDir>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

using namespace Tellarix;

namespace Workbench {

FilmExport::FilmExport(Bench *bench, const FilmPlan &plan, QObject *parent)
    : QObject(parent), _bench(bench), _plan(plan), _timeBefore(bench->selection()->time())
{
    connect(&_timer, SIGNAL(timeout()), this, SLOT(writeNext()));
}

FilmExport::~FilmExport()
{
    if (_task)
        _task->finish();
}

void FilmExport::start()
{
    _task = _bench->tasks()->start(tr("Exporting the replay"), tr("pictures"),
                                   Task::Canceling::Possible);
    connect(_task, SIGNAL(cancelRequested()), this, SLOT(cancel()));
    const QString problem = problemOf(_plan);
    if (!problem.isEmpty())
        end(problem);
    else if (!QDir().mkpath(_plan.folder))
        end(tr("%1: the folder can't be made").arg(QDir::toNativeSeparators(_plan.folder)));
    else
        _timer.start(0);
}

void FilmExport::cancel()
{
    if (!_hasEnded)
        _bench->showStatus(tr("The export was cancelled; %1 pictures are in %2")
                               .arg(_next)
                               .arg(QDir::toNativeSeparators(_plan.folder)));
    end(QString());
}

void FilmExport::end(const QString &problem)
{
    if (_hasEnded)
        return;
    _hasEnded = true;
    _timer.stop();
    if (_next > 0)
        _bench->selection()->setTime(_timeBefore);
    if (!problem.isEmpty())
        _bench->tell({problem});
    if (_task)
        _task->finish(problem);
    _task.clear();
    emit ended();
    deleteLater();
}

/** The map as of the selected time, with the time in its corner. */
void FilmExport::draw(QPainter &painter) const
{
    _bench->mapView()->paint(painter, _plan.size);
    QFont font = painter.font();
    font.setPixelSize(qMax(12, _plan.size.height() / 30));
    font.setBold(true);
    const int margin = font.pixelSize() / 2;
    const QString text =
        QString::fromStdString(_bench->selection()->time().toString("%Y-%m-%d %H:%M:%S"));
    QPainterPath path;
    path.addText(margin, _plan.size.height() - margin, font, text);
    painter.setRenderHint(QPainter::Antialiasing);
    // Can be read on land and water, whatever the colours.
    painter.strokePath(path, QPen(Qt::black, font.pixelSize() / 8.0));
    painter.fillPath(path, Qt::white);
}

void FilmExport::writeNext()
{
    if (!_bench->mapView()->widget()) {
        end(tr("The map of the replay was closed; %1 pictures were written").arg(_next));
        return;
    }
    const QString file = frameFile(_plan, _next);
    _bench->selection()->setTime(frameTime(_plan, _next));
    const Picture picture{tr("Replay"), _plan.size, 1, 96,
                          [this](QPainter &painter) { draw(painter); }};
    ++_next;
    QString error;
    if (!writePicture(picture, file, &error)) {
        end(error);
        return;
    }
    _task->setProgress(_next, frameCount(_plan));
    if (_next < frameCount(_plan))
        return;
    makeFilm();
    end(QString());
}

void FilmExport::makeFilm()
{
    const QString folder = QDir::toNativeSeparators(_plan.folder);
    const QString encoder = _plan.makesFilm ? filmEncoder() : QString();
    if (!encoder.isEmpty()) {
        _bench->jobs()->add(tr("Film of the replay in %1").arg(folder),
                            filmCommand(_plan, encoder));
        _bench->showStatus(
            tr("Wrote %1 pictures to %2; a job makes the film, see the panel of jobs")
                .arg(_next)
                .arg(folder));
        return;
    }
    if (_plan.makesFilm)
        _bench->tell({tr("No film was made of the pictures in %1, since no program for it is "
                         "installed: install ffmpeg")
                          .arg(folder)});
    _bench->showStatus(tr("Wrote %1 pictures to %2").arg(_next).arg(folder));
}

} // namespace Workbench
