// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pictureexport.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/timescale.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QFileInfo>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>

#include <algorithm>

using namespace Tellarix;
using Norvu::Gui::MultiTraceWidget;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

constexpr int Margin = 8;
/** Coordinates beyond this are cut off where pixels are painted. */
constexpr int LargestImage = 32767;
/** Pages of PDF can't be larger than 200 inches. */
constexpr double LargestPage = 14400;
constexpr double PointsPerInch = 72;
/** Below this length in seconds the title tells milliseconds. */
constexpr double ShortWindow = 60;

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::PictureExport", text);
}

QString titleOf(const TraceView &view)
{
    const Core::TimeWindow window = view.visibleTimeWindow();
    const bool isShort = window.length().length() < ShortWindow;
    const char *format = isShort ? "%Y-%m-%d %H:%M:%S.%3f" : "%Y-%m-%d %H:%M:%S";
    return tr("%1 to %2 UTC")
        .arg(QString::fromStdString(window.startTime().toString(format)),
             QString::fromStdString(window.endTime().toString(format)));
}

/** What stands between title and time scale: the rows, or the overview in their place. */
QVector<QWidget *> shownParts(const TraceView &view)
{
    auto *overview = view.findChild<MultiTraceWidget *>();
    if (overview && overview->isActive())
        return {overview};

    QVector<QWidget *> parts;
    for (Trace *row : view.items()) {
        if (!row->isHidden())
            parts.append(row);
    }
    return parts;
}

/** Where the parts of a picture stand. */
class Layout
{
public:
    explicit Layout(TraceView &view) : _view(view)
    {
        if (view.count() > 0)
            _parts = shownParts(view);
        for (const QWidget *part : _parts) {
            _height += part->height();
            _width = std::max(_width, part->width());
        }
        if (view.timeScale()->isVisibleTo(&view))
            _scaleHeight = Trace::Spacing() + view.timeScale()->height();
    }

    bool isEmpty() const { return _width == 0 || _height == 0; }

    QSize size() const
    {
        return {_width + 2 * Margin, partsTop() + _height + _scaleHeight + Margin};
    }

    void draw(QPainter &painter) const
    {
        const QPalette palette = _view.palette();
        const QColor base = palette.color(QPalette::Base);
        const bool isLight = base.lightness() > palette.color(QPalette::Text).lightness();
        painter.fillRect(QRect(QPoint(), size()), isLight ? QColor(Qt::white) : base);
        drawTitle(painter);

        QPoint position(Margin, partsTop());
        for (QWidget *part : _parts) {
            part->render(&painter, position, QRegion(), QWidget::DrawChildren);
            position.ry() += part->height();
        }
        if (_scaleHeight == 0)
            return;
        position += QPoint(Trace::Padding() + _view.rulerSpacing(), Trace::Spacing());
        _view.timeScale()->render(&painter, position, QRegion(), QWidget::DrawChildren);
    }

private:
    int partsTop() const { return Margin + _view.fontMetrics().height() + Margin; }

    void drawTitle(QPainter &painter) const
    {
        const QRect line(Margin, Margin, _width, _view.fontMetrics().height());
        painter.setFont(_view.font());
        painter.setPen(_view.palette().color(QPalette::Text));
        painter.drawText(line, Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextDontClip,
                         titleOf(_view));
    }

    TraceView &_view;
    QVector<QWidget *> _parts;
    int _height{0};
    int _width{0};
    int _scaleHeight{0};
};

bool fail(QString *error, const QString &text)
{
    *error = text;
    return false;
}

QImage imageOf(const TraceView &view, const Layout &layout, QString *error)
{
    const double ratio = view.devicePixelRatioF();
    const QSize pixels = (QSizeF(layout.size()) * ratio).toSize();
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
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    layout.draw(painter);
    return image;
}

bool writePng(const TraceView &view, const Layout &layout, QIODevice &device, QString *error)
{
    const QImage image = imageOf(view, layout, error);
    if (image.isNull())
        return false;
    return image.save(&device, "PNG") || fail(error, tr("the picture can't be encoded"));
}

bool writeSvg(const TraceView &view, const Layout &layout, QIODevice &device, QString *)
{
    QSvgGenerator generator;
    generator.setOutputDevice(&device);
    generator.setResolution(view.logicalDpiX());
    generator.setSize(layout.size());
    generator.setViewBox(QRect(QPoint(), layout.size()));
    generator.setTitle(titleOf(view));
    QPainter painter(&generator);
    layout.draw(painter);
    return true;
}

bool writePdf(const TraceView &view, const Layout &layout, QIODevice &device, QString *)
{
    const QSizeF points = QSizeF(layout.size()) * (PointsPerInch / view.logicalDpiX());
    const double shrink = std::min(1.0, LargestPage / std::max(points.width(), points.height()));
    QPdfWriter writer(&device);
    writer.setResolution(view.logicalDpiX());
    writer.setPageSize(
        QPageSize(points * shrink, QPageSize::Point, QString(), QPageSize::ExactMatch));
    writer.setPageMargins(QMarginsF());
    writer.setTitle(titleOf(view));
    writer.setCreator(tr("Norvu workbench"));
    QPainter painter(&writer);
    painter.scale(shrink, shrink);
    layout.draw(painter);
    return true;
}

using Writer = bool (*)(const TraceView &, const Layout &, QIODevice &, QString *);

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
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit())
        return true;
    return fail(error, file.errorString());
}

} // namespace

QImage pictureOf(TraceView &view, QString *error)
{
    const Layout layout(view);
    if (layout.isEmpty()) {
        fail(error, tr("there are no rows to draw"));
        return QImage();
    }
    return imageOf(view, layout, error);
}

bool writePicture(TraceView &view, const QString &file, QString *error)
{
    const auto failHere = [&](const QString &cause) {
        return fail(error, QStringLiteral("%1: %2").arg(file, cause));
    };
    const Writer writer = writerFor(QFileInfo(file).suffix());
    if (!writer)
        return failHere(tr("pictures are written as .png, .svg or .pdf"));
    const Layout layout(view);
    if (layout.isEmpty())
        return failHere(tr("there are no rows to draw"));

    // Not all of the writers tell when a device takes no more bytes; memory does take them.
    QByteArray content;
    QBuffer buffer(&content);
    QString cause;
    if (!buffer.open(QIODevice::WriteOnly) || !writer(view, layout, buffer, &cause) ||
        !replaceFile(file, content, &cause))
        return failHere(cause);
    return true;
}

} // namespace Workbench
