// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>

class QPainter;

namespace Workbench {

/** What can be drawn as a picture of a fixed size. */
struct Picture
{
    QString title;        /**< of the document, where the format has one */
    QSize size;           /**< in pixels of the screen */
    double pixelRatio{1}; /**< pixels of an image for each of these */
    int dotsPerInch{96};  /**< of the screen */
    std::function<void(QPainter &)> draw;
};

/** @param error  why a null image is returned: more pixels than an image can have */
QImage imageOf(const Picture &picture, QString *error);

/**
 * Writes a picture to a file of the format that its suffix names: PNG with the pixels of the
 * screen, SVG and PDF with lines and texts. A file that is there already is replaced when the new
 * one is complete and not before.
 *
 * @param error  set to a text that names the file and the cause if false is returned
 */
bool writePicture(const Picture &picture, const QString &file, QString *error);

/** Filters of these formats for dialogs. */
QStringList pictureFilters();

} // namespace Workbench
