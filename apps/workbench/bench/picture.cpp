// SPDX-License-Identifier: LGPL-3.0-or-later

#include "picture.h"

#include <tellarix/client/io/savefile.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QFileInfo>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>

#include <algorithm>

namespace Workbench {

namespace {

/** Coordinates beyond this are cut off where pixels are painted. */
constexpr int LargestImage = 32767;
/** Pages of PDF can't be larger than 200 inches. */
constexpr double LargestPage = 14400;
constexpr double PointsPerInch = 72;

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::Picture", text);
}

bool fail(QString *error, const QString &text)
{
    *error = text;
    return false;
}

bool writePng(const Picture &picture, QIODevice &device, QString *error)
{
    const QImage image = imageOf(picture, error);
    if (image.isNull())
        return false;
    return image.save(&device, "PNG") || fail(error, tr("the picture can't be encoded"));
}

bool writeSvg(const Picture &picture, QIODevice &device, QString *)
{
    QSvgGenerator generator;
    generator.setOutputDevice(&device);
    generator.setResolution(picture.dotsPerInch);
    generator.setSize(picture.size);
    generator.setViewBox(QRect(QPoint(), picture.size));
    generator.setTitle(picture.title);
    QPainter painter(&generator);
    picture.draw(painter);
    return true;
}

bool writePdf(const Picture &picture, QIODevice &device, QString *)
{
    const QSizeF points = QSizeF(picture.size) * (PointsPerInch / picture.dotsPerInch);
    const double shrink = std::min(1.0, LargestPage / std::max(points.width(), points.height()));
    QPdfWriter writer(&device);
    writer.setResolution(picture.dotsPerInch);
    writer.setPageSize(
        QPageSize(points * shrink, QPageSize::Point, QString(), QPageSize::ExactMatch));
    writer.setPageMargins(QMarginsF());
    writer.setTitle(picture.title);
    writer.setCreator(tr("Norvu workbench"));
    QPainter painter(&writer);
    painter.scale(shrink, shrink);
    picture.draw(painter);
    return true;
}

using Writer = bool (*)(const Picture &, QIODevice &, QString *);

Writer writerFor(const QString &suffix)
{
    const struct
    {
        const char *suffix;
        Writer writer;
    } writers[] = {{"png", &writePng}, {"svg", &writeSvg}, {"pdf", &writePdf}};
    for (const auto &entry : writers) {
        if (suffix.compare(QLatin1String(entry.suffix), Qt::CaseInsensitive) == 0)
            return entry.writer;
    }
    return nullptr;
}

bool replaceFile(const QString &path, const QByteArray &content, QString *error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && Tellarix::IO::writeWhole(file, content) &&
        Tellarix::IO::commitWhole(file))
        return true;
    return fail(error, file.errorString());
}

} // namespace

QImage imageOf(const Picture &picture, QString *error)
{
    const QSize pixels = (QSizeF(picture.size) * picture.pixelRatio).toSize();
    if (std::max(pixels.width(), pixels.height()) > LargestImage) {
        fail(error, tr("a picture of %1 x %2 pixels is too large; PDF and SVG have no such limit")
                        .arg(pixels.width())
                        .arg(pixels.height()));
        return QImage();
    }
    QImage image(pixels, QImage::Format_RGB32);
    if (image.isNull()) {
        fail(error, tr("no memory for a picture of %1 x %2 pixels")
                        .arg(pixels.width())
                        .arg(pixels.height()));
        return image;
    }
    image.setDevicePixelRatio(picture.pixelRatio);
    QPainter painter(&image);
    picture.draw(painter);
    return image;
}

bool writePicture(const Picture &picture, const QString &file, QString *error)
{
    const auto failHere = [&](const QString &cause) {
        return fail(error, QStringLiteral("%1: %2").arg(file, cause));
    };
    const Writer writer = writerFor(QFileInfo(file).suffix());
    if (!writer)
        return failHere(tr("pictures are written as .png, .svg or .pdf"));

    // Not all of the writers tell when a device takes no more bytes; memory does take them.
    QByteArray content;
    QBuffer buffer(&content);
    QString cause;
    if (!buffer.open(QIODevice::WriteOnly) || !writer(picture, buffer, &cause) ||
        !replaceFile(file, content, &cause))
        return failHere(cause);
    return true;
}

QStringList pictureFilters()
{
    return {tr("PNG picture (*.png)"), tr("SVG drawing (*.svg)"), tr("PDF document (*.pdf)")};
}

} // namespace Workbench
