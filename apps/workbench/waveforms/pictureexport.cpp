// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pictureexport.h"

#include "bench/picture.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/timescale.h>

#include <QCoreApplication>
#include <QPainter>

#include <algorithm>

using namespace Tellarix;
using Norvu::Gui::MultiTraceWidget;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

constexpr int Margin = 8;
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

/** Where the parts of a picture stand. */
class Layout
{
public:
    explicit Layout(TraceView &view) : _view(view)
    {
        if (view.count() > 0)
            _parts = pictureParts(view);
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

/** False if there is nothing to draw. @p view has to outlive the picture. */
bool makePicture(TraceView &view, Picture &picture, QString *error)
{
    const Layout layout(view);
    if (layout.isEmpty()) {
        *error = tr("there are no rows to draw");
        return false;
    }
    picture = {titleOf(view), layout.size(), view.devicePixelRatioF(), view.logicalDpiX(),
               [layout](QPainter &painter) { layout.draw(painter); }};
    return true;
}

} // namespace

QVector<QWidget *> pictureParts(const TraceView &view)
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

QImage pictureOf(TraceView &view, QString *error)
{
    Picture picture;
    return makePicture(view, picture, error) ? imageOf(picture, error) : QImage();
}

bool writePicture(TraceView &view, const QString &file, QString *error)
{
    Picture picture;
    if (makePicture(view, picture, error))
        return writePicture(picture, file, error);
    *error = QStringLiteral("%1: %2").arg(file, *error);
    return false;
}

} // namespace Workbench
