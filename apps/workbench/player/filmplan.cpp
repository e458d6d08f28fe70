// SPDX-License-Identifier: LGPL-3.0-or-later

#include "filmplan.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int64_t MostFrames = 100000;
constexpr int LargestSide = 8192;
constexpr auto FramePattern = "replay-%06d.png";

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::FilmPlan", text);
}

/** As one argument of a command line. */
QString quoted(QString text)
{
    return '"' + text.replace('"', "\"\"\"") + '"';
}

int64_t wantedFrames(const FilmPlan &plan)
{
    if (plan.perFrame <= Core::TimeSpan() || !plan.from.valid() || plan.to < plan.from)
        return 0;
    return (plan.to - plan.from).usecs() / plan.perFrame.usecs() + 1;
}

} // namespace

QString problemOf(const FilmPlan &plan)
{
    const int64_t frames = wantedFrames(plan);
    if (plan.folder.trimmed().isEmpty())
        return tr("No folder is chosen.");
    if (plan.size.isEmpty() || std::max(plan.size.width(), plan.size.height()) > LargestSide)
        return tr("Pictures can have up to %1 pixels a side.").arg(LargestSide);
    if (plan.framesPerSecond < 1)
        return tr("A film has at least one picture a second.");
    if (frames < 1)
        return tr("The end lies before the start, or the time does not advance.");
    if (frames > MostFrames)
        return tr("%1 pictures are too many; up to %2 can be made.").arg(frames).arg(MostFrames);
    return QString();
}

int frameCount(const FilmPlan &plan)
{
    return problemOf(plan).isEmpty() ? static_cast<int>(wantedFrames(plan)) : 0;
}

Core::Time frameTime(const FilmPlan &plan, int frame)
{
    return plan.from + Core::TimeSpan::FromUSecs(frame * plan.perFrame.usecs());
}

QString frameFile(const FilmPlan &plan, int frame)
{
    return QDir(plan.folder).filePath(QString::asprintf(FramePattern, frame + 1));
}

QString filmEncoder()
{
    return QStandardPaths::findExecutable("ffmpeg");
}

QString filmCommand(const FilmPlan &plan, const QString &encoder)
{
    const QDir folder(plan.folder);
    // In its pattern, other signs of percent stand for themselves when they are doubled.
    const QString pattern =
        folder.absolutePath().replace('%', "%%") + '/' + QString::fromLatin1(FramePattern);
    // Most players take films of even sizes only.
    const QStringList arguments{encoder,
                                "-y",
                                "-framerate",
                                QString::number(plan.framesPerSecond),
                                "-i",
                                pattern,
                                "-frames:v",
                                QString::number(frameCount(plan)),
                                "-vf",
                                "pad=ceil(iw/2)*2:ceil(ih/2)*2",
                                "-pix_fmt",
                                "yuv420p",
                                folder.absoluteFilePath("replay.mp4")};
    QStringList words;
    for (const QString &argument : arguments)
        words.append(quoted(argument));
    return words.join(' ');
}

} // namespace Workbench
