// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QImage>
#include <QString>

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** What stands between title and time scale: the rows, or the overview in their place. */
QVector<QWidget *> pictureParts(const Norvu::Gui::TraceView &view);

/**
 * A picture of a trace view: the visible time range as a title, below it all rows, also those that
 * are scrolled out of sight, or the overview if that is shown, and the time scale. The background
 * is white unless colours are dark.
 *
 * The view must have been laid out. Rows are as wide and high as they are on the screen.
 *
 * @param error  why a null image is returned: no rows, or more pixels than a picture can have
 */
QImage pictureOf(Norvu::Gui::TraceView &view, QString *error);

/** Writes the picture to a file; see writePicture() of bench/picture.h. */
bool writePicture(Norvu::Gui::TraceView &view, const QString &file, QString *error);

} // namespace Workbench
