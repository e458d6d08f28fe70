// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <QSize>
#include <QString>

namespace Workbench {

/** What is exported of a replay. */
struct FilmPlan
{
    QString folder; /**< of the pictures, and of the film */
    QSize size;     /**< of a picture in pixels */
    int framesPerSecond{25};
    Tellarix::Core::Time from; /**< of the first picture */
    Tellarix::Core::Time to;   /**< the last picture is at this time, or less than a step before */
    Tellarix::Core::TimeSpan perFrame;
    bool makesFilm{false}; /**< or pictures alone */
};

/** What keeps a plan from being carried out, for the user; empty if nothing does. */
QString problemOf(const FilmPlan &plan);

/** 0 for a plan that can't be carried out. */
int frameCount(const FilmPlan &plan);
Tellarix::Core::Time frameTime(const FilmPlan &plan, int frame);
/** Path of the file of a picture. */
QString frameFile(const FilmPlan &plan, int frame);

/** The program that makes films of pictures; empty if it isn't installed. */
QString filmEncoder();
/** The command line that makes the film of the pictures, into their folder. */
QString filmCommand(const FilmPlan &plan, const QString &encoder);

} // namespace Workbench
