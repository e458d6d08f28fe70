// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/mapwidget.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include <cmath>
#include <utility>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** Of one step of wheel or key. */
const double ZoomStep = std::sqrt(2.0);
/** How far an arrow key moves the map, as a share of its size. */
constexpr double PanStep = 0.125;
const QRectF World(-180, -90, 360, 180);

} // namespace

MapWidget::MapWidget(QWidget *parent)
    : QWidget(parent), _canvas(new Canvas(this)), _region(World), _regionView(_canvas->view())
{
    _clock.start();
    _canvas->setAsynchronous(true);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Map"));
    setAccessibleDescription(tr("Arrow keys move the map, plus and minus zoom."));
    connect(_canvas, SIGNAL(updateRequested()), this, SLOT(update()));
    connect(_canvas, SIGNAL(viewChanged()), this, SIGNAL(viewChanged()));
}

MapWidget::~MapWidget() = default;

QSize MapWidget::sizeHint() const
{
    return QSize(640, 400);
}

void MapWidget::renderTo(QPainter &painter, const QSize &size)
{
    _canvas->renderTo(painter, size);
}

QPoint MapWidget::middle() const
{
    return QPoint(width() / 2, height() / 2);
}

void MapWidget::go(const View &view, ViewHistory::Kind kind)
{
    if (view == _canvas->view())
        return;

    _history.leave(_canvas->view(), kind, _clock.elapsed());
    _canvas->setView(view);
    emit historyChanged();
}

void MapWidget::zoomBy(double factor, const QPointF &pixel)
{
    go(_canvas->projection()->zoomedView(factor, pixel, pixel), ViewHistory::Zoom);
}

void MapWidget::moveBy(const QPoint &steps)
{
    const QPoint pixels(qRound(steps.x() * width() * PanStep),
                        qRound(steps.y() * height() * PanStep));
    go(_canvas->projection()->movedView(pixels), ViewHistory::Pan);
}

void MapWidget::zoomIn()
{
    zoomBy(ZoomStep, middle());
}

void MapWidget::zoomOut()
{
    zoomBy(1 / ZoomStep, middle());
}

void MapWidget::showWorld()
{
    showRegion(World);
}

void MapWidget::showRegion(const QRectF &region)
{
    go(_canvas->projection()->viewOf(region), ViewHistory::Jump);
    _region = region;
    _regionView = _canvas->view();
}

void MapWidget::showPlace(const QPointF &place)
{
    go(_canvas->projection()->viewOf(QRectF(place, QSizeF(0, 0))), ViewHistory::Jump);
}

void MapWidget::goTo(const View &view)
{
    _canvas->setView(view);
    emit historyChanged();
}

void MapWidget::back()
{
    if (_history.canGoBack())
        goTo(_history.back(_canvas->view()));
}

void MapWidget::forward()
{
    if (_history.canGoForward())
        goTo(_history.forward(_canvas->view()));
}

bool MapWidget::event(QEvent *event)
{
    // The window's shortcuts would have them otherwise.
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Back) || key->matches(QKeySequence::Forward))
            event->accept();
    }
    return QWidget::event(event);
}

void MapWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        _canvas->setFont(font());
    if (event->type() == QEvent::PaletteChange)
        _canvas->updateBuffer();
}

void MapWidget::resizeEvent(QResizeEvent *)
{
    _gesture = None;
    setBox(QRect());
    const bool showsRegion = _canvas->view() == _regionView;
    _canvas->setSize(size());
    if (!showsRegion)
        return;

    _canvas->setView(_canvas->projection()->viewOf(_region));
    _regionView = _canvas->view();
}

void MapWidget::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.setClipRegion(event->region());
    _canvas->draw(painter);
    if (_box.isNull())
        return;

    QColor fill = palette().color(QPalette::Highlight);
    painter.setPen(fill);
    fill.setAlpha(48);
    painter.setBrush(fill);
    painter.drawRect(_box.adjusted(0, 0, -1, -1));
}

void MapWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && _gesture != None) {
        cancelGesture();
        return;
    }
    if (_canvas->filterEvent(event))
        return;

    if (event->matches(QKeySequence::Back)) {
        back();
        return;
    }
    if (event->matches(QKeySequence::Forward)) {
        forward();
        return;
    }
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
        QWidget::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
        return moveBy({1, 0});
    case Qt::Key_Right:
        return moveBy({-1, 0});
    case Qt::Key_Up:
        return moveBy({0, 1});
    case Qt::Key_Down:
        return moveBy({0, -1});
    case Qt::Key_Plus:
    case Qt::Key_Equal: // plus without Shift
    case Qt::Key_PageUp:
        return zoomIn();
    case Qt::Key_Minus:
    case Qt::Key_PageDown:
        return zoomOut();
    case Qt::Key_Home:
        return showWorld();
    default:
        QWidget::keyPressEvent(event);
    }
}

void MapWidget::wheelEvent(QWheelEvent *event)
{
    // A notch of a wheel is 120; touchpads send a few units at a time.
    const int turned = event->angleDelta().y() ? event->angleDelta().y() : event->pixelDelta().y();
    if (turned == 0 || _gesture != None) {
        event->ignore();
        return;
    }
    zoomBy(std::pow(ZoomStep, turned / 120.0), event->position());
    hoverPlace(event->position().toPoint());
}

void MapWidget::mousePressEvent(QMouseEvent *event)
{
    if (_gesture != None)
        return;

    if (!_canvas->filterEvent(event) && !_canvas->legendAt(event->pos()))
        startGesture(event);
    updateCursor();
}

void MapWidget::startGesture(QMouseEvent *event)
{
    const bool left = event->button() == Qt::LeftButton;
    if (!left && event->button() != Qt::MiddleButton)
        return;

    _gesture = left && event->modifiers() & Qt::ShiftModifier ? Box : Press;
    _button = event->button();
    _start = event->pos();
    _startView = _canvas->view();
}

void MapWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (_gesture == None)
        _canvas->filterEvent(event);
    else
        continueGesture(event->pos());
    hoverPlace(event->pos());
    updateCursor();
}

void MapWidget::continueGesture(const QPoint &position)
{
    const QPoint moved = position - _start;
    if (_gesture == Press && moved.manhattanLength() >= QApplication::startDragDistance())
        _gesture = Drag;
    if (_gesture == Box)
        setBox(QRect(_start, position).normalized() & rect());
    if (_gesture != Drag)
        return;

    // From where the drag began, so that the map comes back to where it was along with the mouse.
    const std::unique_ptr<Projection> projection(_canvas->projection()->clone());
    projection->setView(_startView);
    _canvas->setView(projection->movedView(moved));
}

void MapWidget::mouseReleaseEvent(QMouseEvent *event)
{
    _canvas->filterEvent(event);
    if (_gesture != None && event->button() == _button)
        endGesture(event->pos());
    updateCursor();
}

void MapWidget::endGesture(const QPoint &position)
{
    const Gesture gesture = _gesture;
    const QRect box = _box;
    _gesture = None;
    setBox(QRect());

    QPointF place;
    if (gesture == Drag && _canvas->view() != _startView) {
        _history.leave(_startView, ViewHistory::Jump, _clock.elapsed());
        emit historyChanged();
    } else if (gesture == Press && _button == Qt::LeftButton &&
               _canvas->projection()->unproject(place, position)) {
        emit placeClicked(place);
    } else if (gesture == Box &&
               qMin(box.width(), box.height()) >= QApplication::startDragDistance()) {
        const double factor = qMin(width() / double(box.width()), height() / double(box.height()));
        // Edge to edge; projections count from the middles of pixels.
        const QPointF half(0.5, 0.5);
        go(_canvas->projection()->zoomedView(factor, QRectF(box).center() - half,
                                             QRectF(rect()).center() - half),
           ViewHistory::Jump);
    }
}

void MapWidget::cancelGesture()
{
    const bool moved = _gesture == Drag;
    _gesture = None;
    setBox(QRect());
    if (moved)
        _canvas->setView(_startView);
    updateCursor();
}

void MapWidget::setBox(const QRect &box)
{
    if (box == _box)
        return;

    _box = box;
    update();
}

void MapWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    QPointF place;
    if (!_canvas->filterEvent(event) && event->button() == Qt::LeftButton &&
        !_canvas->legendAt(event->pos()) && _canvas->projection()->unproject(place, event->pos()))
        showPlace(place);
    updateCursor();
}

void MapWidget::leaveEvent(QEvent *event)
{
    _canvas->filterEvent(event);
    if (std::exchange(_overGlobe, false))
        emit placeLeft();
    updateCursor();
}

void MapWidget::hoverPlace(const QPoint &position)
{
    QPointF place;
    const bool onGlobe =
        rect().contains(position) && _canvas->projection()->unproject(place, position);
    const bool left = _overGlobe && !onGlobe;
    _overGlobe = onGlobe;
    if (onGlobe)
        emit placeHovered(place);
    else if (left)
        emit placeLeft();
}

void MapWidget::updateCursor()
{
    const Layer *layer = _canvas->layerUnderMouse();
    if (_gesture == Drag)
        setCursor(Qt::ClosedHandCursor);
    else if (_gesture == Box)
        setCursor(Qt::CrossCursor);
    else if (layer && layer->hasCursorShape())
        setCursor(layer->cursorShape());
    else
        unsetCursor();
}

void MapWidget::contextMenuEvent(QContextMenuEvent *event)
{
    QPointF place;
    if (_canvas->filterEvent(event) || !_canvas->projection()->unproject(place, event->pos()))
        return;

    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QList<Layer *> &layers = _canvas->layers();
    for (auto layer = layers.crbegin(); layer != layers.crend(); ++layer) {
        QMenu *entries = (*layer)->menu(menu);
        if (!entries)
            continue;

        if (entries->title().isEmpty())
            entries->setTitle((*layer)->name());
        menu->addMenu(entries);
    }
    emit menuRequested(menu, place);
    if (menu->isEmpty())
        delete menu;
    else
        menu->popup(event->globalPos());
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
