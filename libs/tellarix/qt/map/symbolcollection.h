// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/layer.h>

#include <QVector>

namespace Tellarix {
namespace Gui {
namespace Map {

class Symbol;

/** Holds symbols that are no other layer's, such as a key that stands at a pixel of the canvas. */
class TELLARIX_GUI_API SymbolCollection : public Layer
{
    Q_OBJECT

public:
    explicit SymbolCollection(QObject *parent = nullptr);
    ~SymbolCollection() override;

    /** Paints the visible symbols by ascending priority, those of the same in the order in which
     *  they were added. */
    void draw(const Canvas *canvas, QPainter &painter) override;
    void setVisible(bool visible) override;
    void calculateMapPosition(const Canvas *canvas) override;
    /** Whether a visible symbol is under the mouse. */
    bool isInside(const QMouseEvent *event, const QPointF &place) override;

    /** Takes ownership; null and a symbol that is there already are ignored. */
    void addSymbol(Symbol *symbol);
    /** Gives a symbol back to the caller; false if it isn't one of the layer. */
    bool takeSymbol(Symbol *symbol);
    /** Deletes a symbol; false if it isn't one of the layer. */
    bool removeSymbol(Symbol *symbol);
    const QVector<Symbol *> &symbols() const { return _symbols; }

public slots:
    /** Deletes all symbols. */
    void clear();
    /** Has the symbols placed and painted anew; to be called when one of them has changed. */
    void update();

private:
    QVector<Symbol *> _symbols;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
