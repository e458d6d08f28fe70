// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>
#include <tellarix/qt/api.h>

#include <QColor>
#include <QPen>
#include <QString>

class QPainter;

namespace Tellarix {
namespace Gui {

class RecordWidget;

/**
 * A mark at a time of a record widget: a line with a text, which can be dragged if it is movable.
 *
 * With move copy a dragged marker leaves its original place marked and goes on with a corrected
 * time; time() stays, correctedTime() moves.
 */
class TELLARIX_GUI_API RecordMarker
{
public:
    explicit RecordMarker(const Core::Time &time = Core::Time(), const QString &text = QString());
    /** A copy belongs to no widget; a marker that is assigned to stays with its own. */
    RecordMarker(const RecordMarker &other);
    RecordMarker &operator=(const RecordMarker &other);
    /** Leaves its widget, if it has one. */
    virtual ~RecordMarker();

    /** A copy without a widget. */
    virtual RecordMarker *clone() const;

    RecordWidget *parent() const { return _parent; }

    Core::Time time() const { return _time; }
    /** Sets both times; the marker is not modified afterwards. */
    void setTime(const Core::Time &time);
    /** Where the marker has been moved to; time() unless it was moved. */
    Core::Time correctedTime() const { return _correctedTime; }
    void setCorrectedTime(const Core::Time &time);
    /** True when correctedTime() differs from time(). */
    bool isModified() const { return _correctedTime != _time; }
    /** Goes back to time(). */
    void reset();

    const QString &text() const { return _text; }
    void setText(const QString &text);
    /** Text that is drawn beside the line; text() by default. */
    virtual QString renderText() const;
    const QString &description() const { return _description; }
    void setDescription(const QString &description) { _description = description; }

    /** Colour that was set, otherwise the scheme's colour of markers. */
    QColor color() const;
    void setColor(const QColor &color);
    /** Colour of a moved marker; color() unless it was set. */
    QColor modifiedColor() const;
    void setModifiedColor(const QColor &color);

    /** Upper half, lower half, or the whole height for anything else. */
    Qt::Alignment alignment() const { return _alignment; }
    void setAlignment(Qt::Alignment alignment);

    bool isMovable() const { return _movable; }
    void setMovable(bool movable) { _movable = movable; }
    bool isMoveCopyEnabled() const { return _moveCopy; }
    void setMoveCopyEnabled(bool enable) { _moveCopy = enable; }
    bool isEnabled() const { return _enabled; }
    void setEnabled(bool enable);
    bool isHidden() const { return _hidden; }
    void setHidden(bool hidden);

    /** Draws the line at pixel @p x from @p top to @p bottom. */
    virtual void draw(QPainter &painter, RecordWidget *widget, int x, int top, int bottom,
                      const QColor &color, qreal lineWidth);

private:
    friend class RecordWidget;
    void update();
    template <typename T>
    void change(T &member, const T &value);

    RecordWidget *_parent{nullptr};
    Core::Time _time;
    Core::Time _correctedTime;
    QString _text;
    QString _description;
    QColor _color;
    QColor _modifiedColor;
    Qt::Alignment _alignment;
    bool _movable{false};
    bool _moveCopy{false};
    bool _enabled{true};
    bool _hidden{false};
};

} // namespace Gui
} // namespace Tellarix
