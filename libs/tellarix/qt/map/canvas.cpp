// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/canvasjob_p.h>
#include <tellarix/qt/map/legend.h>
#include <tellarix/qt/scheme.h>

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>
#include <cstring>
#include <utility>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

using Guarded = std::vector<QPointer<Layer>>;

Guarded guarded(const QList<Layer *> &layers)
{
    return Guarded(layers.cbegin(), layers.cend());
}

/** Where there is a globe, but no background to show: between land and water. */
QColor plainColor()
{
    const Scheme::Map &map = Scheme::Current().map;
    return QColor((map.land.red() + map.water.red()) / 2,
                  (map.land.green() + map.water.green()) / 2,
                  (map.land.blue() + map.water.blue()) / 2);
}

/** The pixels of an opaque image, told to be opaque: painting it is copying then. */
QImage opaque(const QImage &image)
{
    return QImage(image.constBits(), image.width(), image.height(), image.bytesPerLine(),
                  QImage::Format_RGB32);
}

} // namespace

BackgroundPainter::~BackgroundPainter() = default;

Canvas::Canvas(QObject *parent) : QObject(parent), _projection(new PlateCarree)
{
    _projection->setView({QSize(0, 0), QPointF(0, 0), 1});
}

Canvas::~Canvas()
{
    while (!_layers.isEmpty()) {
        disconnect(_layers.constLast(), nullptr, this, nullptr);
        _layers.takeLast()->_canvas = nullptr;
    }
}

void Canvas::setSize(const QSize &size)
{
    View view = this->view();
    view.size = size.expandedTo(QSize(0, 0));
    takeView(_projection->boundedView(view));
}

void Canvas::setProjection(Projection *projection)
{
    if (!projection || projection == _projection.get())
        return;

    const View view = this->view();
    _projection.reset(projection);
    _projection->setView(projection->boundedView(view));
    // No picture of another projection can be moved to where it would fit.
    _base = Picture();
    outdatePositions();
    updateBuffer();
    emit viewChanged();
}

void Canvas::setView(const QPointF &center, double pixelPerDegree)
{
    setView({size(), center, pixelPerDegree});
}

void Canvas::setView(const View &view)
{
    takeView(_projection->boundedView({size(), view.center, view.pixelPerDegree}));
}

void Canvas::takeView(const View &view)
{
    if (view == this->view())
        return;

    const bool resized = view.size != size();
    _projection->setView(view);
    outdatePositions();
    if (resized) {
        fitBuffer();
        for (Legend *legend : QList<Legend *>(_legends)) {
            if (_legends.contains(legend))
                legend->contextResizeEvent(view.size);
        }
        _legendsOutdated = true;
    }
    requestUpdate();
    emit viewChanged();
}

void Canvas::setBackground(std::shared_ptr<const BackgroundPainter> background)
{
    _background = std::move(background);
    updateBuffer();
}

void Canvas::setAsynchronous(bool asynchronous)
{
    _asynchronous = asynchronous;
    requestUpdate();
}

void Canvas::setFont(const QFont &font)
{
    _font = font;
    _legendsOutdated = true;
    updateBuffer();
}

void Canvas::addLayer(Layer *layer)
{
    insertLayer(_layers.size(), layer);
}

void Canvas::insertLayer(int index, Layer *layer)
{
    if (!layer || layer->_canvas)
        return;

    layer->_canvas = this;
    layer->_positionsOutdated = true;
    _layers.insert(qBound(0, index, _layers.size()), layer);
    connect(layer, SIGNAL(updateRequested(QFlags<Tellarix::Gui::Map::Layer::UpdateHint>)), this,
            SLOT(updateLayer(QFlags<Tellarix::Gui::Map::Layer::UpdateHint>)));
    connect(layer, SIGNAL(visibilityChanged(bool)), this, SLOT(leaveHiddenLayer(bool)));
    connect(layer, SIGNAL(legendAdded(Tellarix::Gui::Map::Legend *)), this,
            SLOT(addLegend(Tellarix::Gui::Map::Legend *)));
    connect(layer, SIGNAL(legendRemoved(Tellarix::Gui::Map::Legend *)), this,
            SLOT(removeLegend(Tellarix::Gui::Map::Legend *)));
    for (Legend *legend : layer->legends())
        addLegend(legend);
    _layersOutdated = true;
    requestUpdate();
}

bool Canvas::removeLayer(Layer *layer)
{
    if (!_layers.removeOne(layer))
        return false;

    disconnect(layer, nullptr, this, nullptr);
    layer->_canvas = nullptr;
    for (Legend *legend : layer->legends())
        removeLegend(legend);
    _layersOutdated = true;
    requestUpdate();
    if (_underMouse == layer)
        leaveLayer();
    return true;
}

void Canvas::updateBuffer()
{
    _job.reset();
    _baseOutdated = true;
    _layersOutdated = true;
    requestUpdate();
}

void Canvas::updateLayer(const QFlags<Layer::UpdateHint> &hints)
{
    auto *layer = qobject_cast<Layer *>(sender());
    if (layer && hints.testFlag(Layer::SymbolPositions))
        layer->_positionsOutdated = true;
    if ((layer && layer->takeBufferOutdated()) || hints.testFlag(Layer::Buffer))
        _layersOutdated = true;
    requestUpdate();
}

void Canvas::requestUpdate()
{
    if (std::exchange(_updateRequested, true))
        return;

    QMetaObject::invokeMethod(this, "allowUpdateRequest", Qt::QueuedConnection);
    emit updateRequested();
}

void Canvas::allowUpdateRequest()
{
    _updateRequested = false;
}

void Canvas::outdatePositions()
{
    for (Layer *layer : qAsConst(_layers))
        layer->_positionsOutdated = true;
}

template <typename Visit>
bool Canvas::visitFromTop(Visit visit)
{
    const Guarded layers = guarded(_layers);
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
        if (*layer && (*layer)->_canvas == this && (*layer)->isVisible() && visit(layer->data()))
            return true;
    }
    return false;
}

template <typename Visit>
void Canvas::visitFromBottom(Visit visit)
{
    for (const QPointer<Layer> &layer : guarded(_layers)) {
        if (layer && layer->_canvas == this && layer->isVisible())
            visit(layer.data());
    }
}

void Canvas::placeSymbols()
{
    visitFromBottom([this](Layer *layer) {
        if (std::exchange(layer->_positionsOutdated, false))
            layer->calculateMapPosition(this);
    });
}

bool Canvas::isBaseCurrent() const
{
    return !_baseOutdated && _base.view == view();
}

bool Canvas::isBufferCurrent() const
{
    return isBaseCurrent() && !_layersOutdated && _bufferView == view();
}

void Canvas::renderBuffer()
{
    if (isBufferCurrent())
        return;

    if (!isBaseCurrent()) {
        if (_asynchronous && _background && !_base.image.isNull()) {
            startJob();
            return;
        }
        renderBase();
    }
    composeBuffer();
}

void Canvas::renderBase()
{
    _job.reset();
    _baseOutdated = false;
    _base.view = view();
    if (_base.image.size() != size())
        _base.image = QImage(size(), QImage::Format_ARGB32_Premultiplied);
    if (_base.image.isNull())
        return;

    if (_background) {
        _background->paint(_base.image, *_projection);
    } else {
        QPainter painter(&_base.image);
        fillPlainly(painter, _base.image.rect());
    }
}

void Canvas::startJob()
{
    // One at a time: while the view changes, what comes of the last one still shows more of the
    // present view than the buffer does.
    if (_job)
        return;

    _job = std::make_unique<CanvasJob>(_background, *_projection);
    connect(_job.get(), SIGNAL(finished()), this, SLOT(takeBackground()));
}

void Canvas::takeBackground()
{
    // A job that was given up may have sent its signal before.
    if (!_job || sender() != _job.get())
        return;

    _base = Picture{_job->takeImage(), _job->view()};
    _baseOutdated = false;
    _job.release()->deleteLater();
    requestUpdate();
}

void Canvas::composeBuffer()
{
    _layersOutdated = false;
    _bufferView = view();
    if (_base.image.isNull()) {
        _buffer = QImage();
        return;
    }

    // What is allocated already is cheaper to fill than new memory.
    if (_buffer.size() == _base.image.size() && _buffer.format() == _base.image.format())
        std::memcpy(_buffer.bits(), _base.image.constBits(),
                    static_cast<std::size_t>(_buffer.sizeInBytes()));
    else
        _buffer = _base.image.copy();
    QPainter painter(&_buffer);
    visitFromBottom([&](Layer *layer) { layer->baseBufferUpdated(this, painter); });
    visitFromBottom([&](Layer *layer) { layer->bufferUpdated(this, painter); });
}

void Canvas::fitBuffer()
{
    QImage fitting(size(), QImage::Format_ARGB32_Premultiplied);
    if (!fitting.isNull()) {
        QPainter painter(&fitting);
        drawBuffer(painter);
    }
    _buffer = fitting;
    _bufferView = view();
    // It shows the right place, but isn't what the layers would have painted.
    _layersOutdated = true;
}

void Canvas::fillPlainly(QPainter &painter, const QRegion &region) const
{
    const QRegion globe(globeArea().toAlignedRect());
    for (const QRect &rect : region - globe)
        painter.fillRect(rect, Scheme::Current().map.outside);
    for (const QRect &rect : region &globe)
        painter.fillRect(rect, plainColor());
}

QRectF Canvas::globeArea() const
{
    // Painters count from the edges of pixels, projections from their middles.
    constexpr double Farthest = 1 << 24;
    return _projection->globe().translated(0.5, 0.5) &
           QRectF(-Farthest, -Farthest, 2 * Farthest, 2 * Farthest);
}

QRegion Canvas::drawMoved(QPainter &painter, const Picture &picture, const QRegion &wanted) const
{
    if (picture.image.isNull() || wanted.isEmpty())
        return wanted;

    QRectF target = _projection->rectOf(picture.view);
    const bool scaled = picture.view.pixelPerDegree != view().pixelPerDegree;
    if (!scaled)
        target.moveTo(std::round(target.x()), std::round(target.y()));
    const double scale = target.width() / picture.image.width();
    const QRectF globe = globeArea();
    const double globeWidth = 360 * view().pixelPerDegree;
    const QImage image = opaque(picture.image);

    QRegion missing = wanted;
    for (const int turn : {0, -1, 1}) {
        const double shift = turn * globeWidth;
        const QRectF turned = target.translated(scaled ? shift : std::round(shift), 0);
        // No more of a picture than one globe, or its blank sides would cover its neighbours.
        const double middle = turned.x() + (picture.view.size.width() / 2 + 0.5) * scale;
        const QRectF whole(middle - globeWidth / 2, globe.y(), globeWidth, globe.height());
        const QRegion area = missing & (turned & whole & globe).toAlignedRect();
        for (const QRect &rect : area) {
            const QRectF source((rect.x() - turned.x()) / scale, (rect.y() - turned.y()) / scale,
                                rect.width() / scale, rect.height() / scale);
            painter.drawImage(QRectF(rect), image, source & QRectF(image.rect()));
        }
        missing -= area;
    }
    return missing;
}

void Canvas::drawBuffer(QPainter &painter) const
{
    if (_bufferView == view() && !_buffer.isNull()) {
        painter.drawImage(QPoint(0, 0), opaque(_buffer));
        return;
    }

    QRegion missing = drawMoved(painter, {_buffer, _bufferView}, QRect(QPoint(0, 0), size()));
    missing = drawMoved(painter, _base, missing);
    fillPlainly(painter, missing);
}

void Canvas::draw(QPainter &painter)
{
    // What is asked for from here on may come too late for this picture.
    _updateRequested = false;
    placeSymbols();
    renderBuffer();
    drawBuffer(painter);
    if (_legendsOutdated)
        layOutLegends();
    visitFromBottom([&](Layer *layer) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setFont(_font);
        layer->draw(this, painter);
        painter.restore();
    });
    drawLegends(painter);
}

void Canvas::renderTo(QPainter &painter, const QSize &size)
{
    const View present = view();
    const bool asynchronous = std::exchange(_asynchronous, false);
    const Picture base = std::exchange(_base, Picture());
    QImage buffer = std::exchange(_buffer, QImage());
    const View bufferView = _bufferView;
    const bool baseOutdated = _baseOutdated;
    std::unique_ptr<CanvasJob> job = std::move(_job);

    blockSignals(true);
    const double scale = present.size.isEmpty()
                             ? 1
                             : qMin(size.width() / double(present.size.width()),
                                    size.height() / double(present.size.height()));
    takeView(_projection->boundedView(
        {size.expandedTo(QSize(0, 0)), present.center, present.pixelPerDegree * scale}));
    _baseOutdated = true;
    painter.save();
    painter.setClipRect(QRect(QPoint(0, 0), size), Qt::IntersectClip);
    draw(painter);
    painter.restore();

    takeView(present);
    blockSignals(false);
    _asynchronous = asynchronous;
    _base = base;
    _baseOutdated = baseOutdated;
    _buffer = std::move(buffer);
    _bufferView = bufferView;
    _layersOutdated = true;
    _job = std::move(job);
    _updateRequested = false;
    requestUpdate();
}

QPointF Canvas::nearestPlace(const QPoint &position) const
{
    const QRectF globe = _projection->globe();
    // The eastern edge is the western one already.
    const double right = qMax(globe.left(), globe.right() - 0.001);
    QPointF place;
    _projection->unproject(place, QPointF(qBound(globe.left(), position.x() + 0.0, right),
                                          qBound(globe.top(), position.y() + 0.0, globe.bottom())));
    return place;
}

void Canvas::leaveLayer()
{
    const QPointer<Layer> former = std::exchange(_underMouse, QPointer<Layer>());
    if (former)
        former->handleLeaveEvent();
}

void Canvas::leaveHiddenLayer(bool visible)
{
    _legendsOutdated = true;
    if (!visible && sender() == _underMouse)
        leaveLayer();
}

void Canvas::moveMouse(QMouseEvent *event, const QPointF &place)
{
    QPointer<Layer> inside;
    visitFromTop([&](Layer *layer) {
        if (layer->isInside(event, place))
            inside = layer;
        return !inside.isNull();
    });
    if (inside == _underMouse)
        return;

    leaveLayer();
    if (!inside || inside->_canvas != this)
        return;

    _underMouse = inside;
    inside->handleEnterEvent();
}

bool Canvas::filterEvent(QEvent *event)
{
    using Filter = bool (Layer::*)(QMouseEvent *, const QPointF &);
    const auto filterMouse = [&](Filter filter) {
        auto *mouse = static_cast<QMouseEvent *>(event);
        // Who took a press hears of its release, wherever that is.
        const bool held = mouse->type() == QEvent::MouseButtonRelease ||
                          (mouse->type() == QEvent::MouseMove && mouse->buttons());
        if (!held && legendAt(mouse->pos())) {
            leaveLayer();
            return false;
        }
        placeSymbols();
        const QPointF place = nearestPlace(mouse->pos());
        moveMouse(mouse, place);
        return visitFromTop([&](Layer *layer) { return (layer->*filter)(mouse, place); });
    };

    switch (event->type()) {
    case QEvent::MouseMove:
        return filterMouse(&Layer::filterMouseMoveEvent);
    case QEvent::MouseButtonPress:
        return filterMouse(&Layer::filterMousePressEvent);
    case QEvent::MouseButtonRelease:
        return filterMouse(&Layer::filterMouseReleaseEvent);
    case QEvent::MouseButtonDblClick:
        return filterMouse(&Layer::filterMouseDoubleClickEvent);
    case QEvent::Leave:
        leaveLayer();
        return false;
    case QEvent::ContextMenu: {
        auto *menu = static_cast<QContextMenuEvent *>(event);
        const QPointF place = nearestPlace(menu->pos());
        return !legendAt(menu->pos()) && visitFromTop([&](Layer *layer) {
            return layer->filterContextMenuEvent(menu, place);
        });
    }
    case QEvent::KeyPress:
        return visitFromTop([event](Layer *layer) {
            return layer->filterKeyPressEvent(static_cast<QKeyEvent *>(event));
        });
    default:
        return false;
    }
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
