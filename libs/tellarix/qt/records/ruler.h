// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QPointF>
#include <QString>
#include <QVector>
#include <QWidget>

namespace Tellarix {
namespace Gui {

/** A text along a ruler, in pixels from its start. */
struct RulerLabel
{
    QString text;
    double position{0}; /**< where its centre should be */
    double extent{0};   /**< room that it takes */
    double start{0};    /**< where it begins; set by layoutLabels() */
};

/**
 * Finds room for labels within 0 to @p length: about their positions, moved inwards at the ends.
 * Those that fit without being moved come first, otherwise the order of @p labels decides; what
 * would come nearer than @p gap to another is left out.
 */
TELLARIX_GUI_API QVector<RulerLabel> layoutLabels(const QVector<RulerLabel> &labels, double length,
                                                  double gap);

/**
 * A scale along one edge of a view: ticks, their texts, a selected range, and the mouse gestures
 * that change what the view shows.
 *
 * The ruler shows values from lower() to upper() at scale() pixels per unit. Ticks stand where
 * value + offset() is a multiple of the tick distance. The wheel zooms about the pointer, a wheel
 * along the ruler and dragging with the left button pan; the ruler itself does not change: it emits
 * rangeChangeRequested() and its owner answers with setScale() and setRange(), or showRange().
 *
 * A vertical ruler has its lower value at the bottom.
 */
class TELLARIX_GUI_API Ruler : public QWidget
{
    Q_OBJECT

public:
    /** The edge of the view at which the ruler stands. */
    enum Position
    {
        Bottom = 0,
        Top = 1,
        Left = 2,
        Right = 3,
    };

    explicit Ruler(QWidget *parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags(),
                   Position position = Bottom);
    ~Ruler() override;

    Position position() const { return _position; }
    void setPosition(Position position);
    bool isVertical() const { return _position == Left || _position == Right; }

    double scale() const { return _scale; }   /**< pixels per unit */
    double lower() const { return _lower; }   /**< value at the left or lower end */
    double upper() const { return _upper; }   /**< value at the right or upper end */
    double offset() const { return _offset; } /**< added to values before ticks are placed */
    /** Distance of the labelled ticks; 0 as long as there is no room for any. */
    double majorSpacing() const { return _majorSpacing; }
    /** Distance of the unlabelled ticks. */
    double minorSpacing() const { return _minorSpacing; }

    /** With automatic scale the ruler spans its range over its length itself, without limits, and
     *  setScale() does nothing; off at the start. */
    void setAutoScaleEnabled(bool enable);
    bool isAutoScaleEnabled() const { return _autoScale; }
    /** Narrowest and widest range that can be asked for, in units; 1E-6 and 1E12 at the start. A
     *  range beyond them is widened or narrowed about its centre. */
    void setRangeLimits(double narrowest, double widest);

    /**
     * Lets the user select a range with the middle button, or with the left one and Shift; a click
     * clears the selection.
     * @param handles  shows handles at its ends by which it can be changed
     */
    void setRangeSelectionEnabled(bool enable, bool handles = false);
    bool isRangeSelectionEnabled() const { return _rangeSelection; }
    bool hasSelection() const { return _selectionLower < _selectionUpper; }
    double selectionLower() const { return _selectionLower; }
    double selectionUpper() const { return _selectionUpper; }

    /** Whether wheel and dragging change the range; on at the start. */
    void setInteractive(bool enable);
    bool isInteractive() const { return _interactive; }

    /** Pixel of a value along the ruler, and its inverse; not clamped. */
    double valueToPixel(double value) const;
    double pixelToValue(double pixel) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /** Pixels per unit about the lower end, limited by the range limits. Nothing happens for what
     *  is not above 0 or not finite. @return true if the scale is another one now */
    bool setScale(double pixelsPerUnit);
    /** Shows a range: with automatic scale exactly this one, also a descending one with its larger
     *  value at the lower end, otherwise from @p lower as far as the scale reaches. @return true if
     * the range is another one now */
    bool setRange(double lower, double upper);
    /** Shows exactly this range, within the limits, by choosing the scale for it. Nothing happens
     *  for an empty one. @return true if range or scale are others now */
    bool showRange(double lower, double upper);
    /** Moves ticks; TimeScale works its offset out itself. */
    void setOffset(double offset);
    /** Selects a range; an empty one selects nothing. Emits nothing. */
    void setSelection(double lower, double upper);

signals:
    /** The user asks for another range. */
    void rangeChangeRequested(double lower, double upper);
    void rangeChanged(double lower, double upper);
    void scaleChanged(double pixelsPerUnit);
    /** Tick distances or offset have changed: labelled, unlabelled, offset. */
    void changedInterval(double major, double minor, double offset);
    /** The selection while it is dragged, and when the button is released. */
    void selectionChanging(double lower, double upper);
    void selectionChanged(double lower, double upper);

protected:
    /**
     * Text of a labelled tick.
     * @param value      value of the tick, offset included
     * @param nextValue  value of the tick behind it
     * @param line       line of text, counted from 0 at the ticks
     * @return false if there is no such line
     */
    virtual bool getTickText(double value, double nextValue, int line, QString &text) const;
    /** Chooses tick distances for ticks that stand at least @p minimumPixels apart. */
    virtual void chooseSpacing(double minimumPixels, double &major, double &minor) const;
    /** Whether the ends of the range stand in the first and last pixel, rather than each value at
     * the start of its pixel. */
    virtual bool endsOnPixels() const { return isVertical(); }
    /** Number of lines of text. */
    virtual int lineCount() const { return 1; }
    /** Room that the text of a labelled tick needs along the ruler, in pixels, if ticks stand
     *  @p major apart. */
    virtual double labelExtent(double major) const;
    /** The offset to use with a tick distance; offset() unless a derived class knows better. */
    virtual double alignedOffset(double major) const;
    /** The labels of a line, as they want to stand; those of the ticks by getTickText(). */
    virtual QVector<RulerLabel> labels(int line) const;
    /** Pixels along the ruler. */
    int rulerLength() const;

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;

    /** Works tick distances out again and emits changedInterval() if they are others now. */
    void updateSpacing();

private:
    enum class Drag
    {
        None,
        Pan,
        Select,
        MoveHandle,
    };
    enum class Handle
    {
        None,
        Lower,
        Upper,
    };

    // State
    void applySpacing(double major, double minor, double offset);
    bool applyRange(double lower, double upper, double scale);
    double direction() const { return _upper < _lower ? -1 : 1; }
    double limitedWidth(double width) const;
    void limitRange(double &lower, double &upper) const;
    QVector<double> ticksAt(double spacing) const;

    // Painting
    void drawBaseline(QPainter &painter) const;
    void drawSelection(QPainter &painter) const;
    void drawTicks(QPainter &painter, double spacing, int length) const;
    void drawLabels(QPainter &painter, int line) const;
    QRectF bandRect(double from, double to) const;
    QRectF tickRect(double pixel, int length) const;
    QRectF labelRect(const RulerLabel &label, int line) const;
    double textDistance() const;
    QSize sizeWithLength(int length) const;

    // Interaction
    double pixelAlong(const QPointF &position) const;
    double boundedValueAt(double pixel) const;
    Handle handleAt(double pixel) const;
    void beginDrag(Drag drag, double pixel, double anchorValue);
    void panTo(double pixel);
    void panBy(double pixels);
    void selectTo(double pixel);
    void finishSelection(double pixel);
    void setHovered(Handle handle);
    void updateCursor();
    void requestRange(double lower, double upper);

    Position _position;
    double _scale{1};
    double _lower{0};
    double _upper{1};
    double _offset{0};
    double _majorSpacing{0};
    double _minorSpacing{0};
    double _narrowest{1E-6};
    double _widest{1E12};
    double _selectionLower{0};
    double _selectionUpper{0};
    bool _autoScale{false};
    bool _interactive{true};
    bool _rangeSelection{false};
    bool _selectionHandles{false};
    Handle _hovered{Handle::None};
    Drag _drag{Drag::None};
    double _dragPixel{0};  /**< where the button was pressed */
    double _dragAnchor{0}; /**< end of the selection that stays */
    double _dragLower{0};  /**< range when the button was pressed */
    double _dragUpper{0};
};

/** Smallest number of the form 1, 2 or 5 times a power of ten that is not below @p distance, save
 *  for rounding; 0 for what is not above 0, not finite or out of reach. */
TELLARIX_GUI_API double roundTickDistance(double distance);

/**
 * Values of ticks in [lower, upper] at which value + offset is a multiple of @p spacing.
 * @return in ascending order; empty for arguments that are not finite, a spacing that is not above
 *         0 or lost in rounding, and for more than 4096 ticks, which no ruler has room for
 */
TELLARIX_GUI_API QVector<double> tickValues(double lower, double upper, double spacing,
                                            double offset);

} // namespace Gui
} // namespace Tellarix
