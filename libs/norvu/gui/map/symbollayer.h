// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/layer.h>
#include <norvu/gui/map/symbol.h>

#include <QVector>

namespace Norvu {
namespace Gui {
namespace Map {

/**
 * Holds symbols and owns them, paints them, and tells when the mouse meets one. Shadows lie below
 * all symbols; symbols lie above those of a lower priority, and within one priority above those
 * before them in the list.
 */
class NORVU_GUI_API SymbolLayer : public Layer
{
    Q_OBJECT

public:
    explicit SymbolLayer(QObject *parent = nullptr);
    /** Deletes all symbols. */
    ~SymbolLayer() override;

    /** Appends a symbol that is in no layer yet and takes ownership; null is ignored. After a batch
     *  call sortSymbols() and update(). */
    void addSymbol(Symbol *symbol);
    /** Gives a symbol back to the caller; null for an index out of range. */
    Symbol *takeSymbol(int index);
    /** The same; false if it isn't one of the layer. */
    bool takeSymbol(const Symbol *symbol);
    /** Takes a symbol and deletes it; false if it isn't one of the layer. */
    bool removeSymbol(const Symbol *symbol);
    bool removeSymbol(int index);
    /** Deletes all symbols. */
    void clear();

    /** In the order of painting. */
    const QVector<Symbol *> &symbols() const { return _symbols; }
    /** From north to south, so that a symbol covers what stands behind it; those of one latitude
     *  are in any order. */
    void sortSymbols();

    bool hasShadows() const { return _shadows; }
    void setShadows(bool shadows);
    /** Asks for new positions and a repaint. */
    void update();

    void draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;
    void setVisible(bool visible) override;
    void calculateMapPosition(const Tellarix::Gui::Map::Canvas *canvas) override;
    /** Finds the first symbol under the mouse, which is the lowest one, whether it is shown or not;
     *  the mouse events that follow are about it. */
    bool isInside(const QMouseEvent *event, const QPointF &place) override;
    void handleLeaveEvent() override;
    bool filterMouseMoveEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMousePressEvent(QMouseEvent *event, const QPointF &place) override;
    bool filterMouseDoubleClickEvent(QMouseEvent *event, const QPointF &place) override;

signals:
    /** Another symbol than before is under the mouse, or none, which is null. */
    void symbolHovered(Norvu::Gui::Map::Symbol *symbol);
    /** The left button was pressed on a symbol. */
    void symbolPressed(Norvu::Gui::Map::Symbol *symbol);
    void symbolDoubleClicked(Norvu::Gui::Map::Symbol *symbol);

private:
    void setSymbolsVisible(bool visible);

    QVector<Symbol *> _symbols;
    bool _shadows{true};
    Symbol *_hoverSymbol{nullptr};
    bool _hoverChanged{false};
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
