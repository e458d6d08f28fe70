// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QObject>
#include <QSize>
#include <QString>

class QPainter;
class QRect;

namespace Tellarix {
namespace Gui {
namespace Map {

class Layer;

/**
 * A key to what a layer shows. The canvas lays out the legends of its visible layers in the corners
 * of the map, one above the other, each in a frame with its title as a header.
 */
class TELLARIX_GUI_API Legend : public QObject
{
    Q_OBJECT

public:
    explicit Legend(QObject *parent = nullptr);
    ~Legend() override;

    /** Puts it nearest to its corner, before the other legends there. */
    virtual void bringToFront();
    /** A legend of the same content for another parent; null if it can't be copied. */
    virtual Legend *clone(QObject *parent) const;
    /** Paints the content into the rectangle that the canvas has laid out, of size() pixels; the
     *  painter has the canvas's font and the scheme's pen for legends. */
    virtual void draw(const QRect &rect, QPainter &painter) = 0;
    /** The canvas has got another size. */
    virtual void contextResizeEvent(const QSize &size);

    /** The layer that it was added to, or null. */
    Layer *layer() const { return _layer; }

    const QString &title() const { return _title; }
    void setTitle(const QString &title);
    /** The corner or edge of the canvas in which it stands. */
    Qt::Alignment alignment() const { return _alignment; }
    void setAlignment(Qt::Alignment alignment);
    /** Size of the content in pixels. */
    const QSize &size() const { return _size; }

    /** A disabled legend is not shown; its layer decides. */
    bool isEnabled() const { return _enabled; }
    /** Whether the user wants it. */
    bool isVisible() const { return _visible; }

public slots:
    void setEnabled(bool enabled);
    void setVisible(bool visible);

signals:
    /** It has to be laid out or painted anew. */
    void updateRequested();
    void bringToFrontRequested(Tellarix::Gui::Map::Legend *legend);

protected:
    /** For subclasses, which know how much room they need. */
    void setSize(const QSize &size);

private:
    friend class Layer;

    Layer *_layer{nullptr};
    QString _title;
    Qt::Alignment _alignment{Qt::AlignRight | Qt::AlignTop};
    QSize _size;
    bool _enabled{true};
    bool _visible{true};
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
