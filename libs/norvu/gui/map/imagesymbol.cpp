// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/imagesymbol.h>

#include <QIcon>
#include <QImage>
#include <QPainter>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

constexpr int LabelGap = 4;
constexpr QRgb ShadowColor = 0x404040;
constexpr int ShadowAlpha = 160;

/** On screens of a higher resolution pictures have more pixels than they cover on the map. */
QSize coveredSize(const QPixmap &image)
{
    return image.size() / image.devicePixelRatio();
}

/** Turns all ink into that of a shadow, as dense as it was. */
void dim(QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(line[x]);
            if (alpha > 0)
                line[x] = static_cast<QRgb>(alpha * ShadowAlpha / 255) << 24 | ShadowColor;
        }
    }
}

} // namespace

ImageSymbol::ImageSymbol(double longitude, double latitude) : AnnotatedSymbol(longitude, latitude)
{}

ImageSymbol::ImageSymbol(const QImage &image, double longitude, double latitude)
    : ImageSymbol(QPixmap::fromImage(image), longitude, latitude)
{}

ImageSymbol::ImageSymbol(const QPixmap &image, double longitude, double latitude)
    : AnnotatedSymbol(longitude, latitude)
{
    setImage(image);
}

ImageSymbol::ImageSymbol(const QIcon &icon, const QSize &size, double longitude, double latitude)
    : ImageSymbol(icon.pixmap(size, QIcon::Normal, QIcon::On), longitude, latitude)
{}

ImageSymbol::ImageSymbol(const ImageSymbol &other, double longitude, double latitude)
    : ImageSymbol(other._image, longitude, latitude)
{
    copyShadow(other);
}

void ImageSymbol::setImage(const QPixmap &image)
{
    _image = image;
    _shadow = QPixmap();
    setSize(coveredSize(image));
}

void ImageSymbol::setShadow(const QPixmap &shadow, const QPoint &offset)
{
    _shadow = shadow;
    _shadowOffset = offset;
}

void ImageSymbol::setShadow(const QImage &shadow, const QPoint &offset)
{
    setShadow(QPixmap::fromImage(shadow), offset);
}

void ImageSymbol::copyShadow(const ImageSymbol &other)
{
    setShadow(other._shadow, other._shadowOffset);
}

void ImageSymbol::generateShadow()
{
    generateShadow(_shadow, _shadowOffset, _image);
}

void ImageSymbol::generateShadow(QPixmap &shadow, QPoint &offset, const QPixmap &image)
{
    QImage made;
    generateShadow(made, offset, image.toImage());
    shadow = QPixmap::fromImage(made);
}

void ImageSymbol::generateShadow(QImage &shadow, QPoint &offset, const QImage &image)
{
    if (image.isNull()) {
        offset = QPoint();
        shadow = QImage();
        return;
    }

    const int width = image.width();
    const int height = image.height();
    QImage source = image;
    source.setDevicePixelRatio(1);
    QImage made(2 * width + 2, 2 * height + 2, QImage::Format_ARGB32);
    made.fill(0);
    {
        QPainter painter(&made);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(1.0, 1.0);
        painter.scale(0.7, 0.5);
        painter.shear(-1.0, 0.2);
        painter.drawImage(width, 0, source);
        offset = painter.transform().map(QPoint(3 * width / 2, height));
    }
    dim(made);
    blurImage(made, 1);
    const QRect filled = trimmedImageRect(made);
    if (filled.isValid()) {
        made = made.copy(filled);
        offset -= filled.topLeft();
    }
    made.setDevicePixelRatio(image.devicePixelRatio());
    shadow = made;
}

bool ImageSymbol::isInside(int x, int y) const
{
    return QRect(position(), coveredSize(_image)).contains(x, y);
}

void ImageSymbol::drawShadow(QPainter &painter)
{
    if (_shadow.isNull())
        generateShadow();
    if (!_shadow.isNull())
        painter.drawPixmap(position() - _shadowOffset / _shadow.devicePixelRatio(), _shadow);
}

QPoint ImageSymbol::annotationOffset() const
{
    return QPoint(0, -LabelGap - coveredSize(_image).height());
}

void ImageSymbol::customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter)
{
    AnnotatedSymbol::customDraw(canvas, painter);
    const QSize size = coveredSize(_image);
    painter.drawPixmap(position() - QPoint(size.width() / 2, size.height()), _image);
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
