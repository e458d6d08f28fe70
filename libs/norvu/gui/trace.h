// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/core/datamodel/waveformstreamid.h>
#include <tellarix/core/time.h>

#include <QColor>
#include <QString>
#include <QVariant>
#include <QVector>
#include <QWidget>

class QGridLayout;
class QPainter;

namespace Tellarix {

class Record;

namespace DataModel {
class Stream;
}

namespace Gui {
class RecordWidget;
class TimeScale;
} // namespace Gui

} // namespace Tellarix

namespace Norvu {
namespace Gui {

class ColorBar;
class RowLabel;
class TraceView;

/** Keys of Trace::setData() that rows and views use themselves; hosts take others from 5 on. */
enum TraceDataKey
{
    TraceNetworkCode = 0,  /**< string */
    TraceStationCode = 1,  /**< string */
    TraceLocationCode = 2, /**< string */
    TraceChannelCode = 3,  /**< string */
    TraceDistance = 4,     /**< double, the first sort key of a view */
};

/**
 * One row of a waveform view: a record widget with a status bar, a header, a column for the
 * amplitude axis, an optional time axis and an optional widget on its right-hand side.
 *
 * The row also carries what is known of its streams: values by key, and one stream per record slot
 * of the record widget. Streams are borrowed. A row stands alone or in a TraceView, which owns it.
 */
class NORVU_GUI_API Trace : public QWidget
{
    Q_OBJECT

public:
    /** @param color  colour of the status bar, which setColorBarWidth() shows */
    Trace(const QString &label, QColor color, QWidget *parent = nullptr,
          Qt::WindowFlags f = Qt::WindowFlags());
    /** A row around a record widget of the caller's making, which it owns from now on. */
    Trace(const QString &label, Tellarix::Gui::RecordWidget *widget, QColor color,
          QWidget *parent = nullptr, Qt::WindowFlags f = Qt::WindowFlags());
    ~Trace() override;

    /** Distance between the cells of a row in pixels. */
    static int Spacing() { return 6; }
    /** Margin around the cells of a row in pixels. */
    static int Padding() { return 4; }
    /**
     * Pixels from the margin of a row to its traces.
     * @param extra  width of the status bar, 0 and below without one
     */
    static int FixedLabelWidth(int extra);

    /** Sets the label and drops a description. */
    void setLabel(const QString &label);
    const QString &label() const { return _label; }
    /** Draws the label as that of something that isn't in use. */
    void setLabelPale(bool pale);
    /** Shows a text behind the label until the next setLabel(); both may hold rich text. */
    void setDescription(const QString &description);
    /** The rich text that the header shows. */
    QString labelText() const;

    void setColor(const QColor &color);
    const QColor &color() const;
    /** Width of the status bar, of which two pixels on either side stay empty; 0 hides it. */
    void setColorBarWidth(int width);

    /** Whether the row is drawn plainly, without the looks and mouse tracking of a list item. */
    void setStatic(bool isStatic);
    bool isStatic() const { return _static; }
    bool isSelected() const { return _selected; }
    /** Whether the host has hidden this row alone, wherever its view is. */
    bool isTakenOut() const { return isHidden() && testAttribute(Qt::WA_WState_ExplicitShowHide); }
    /** True once the row's view was told that its data were requested. */
    bool isDataRequested() const { return _dataRequested; }

    void setData(int key, const QVariant &value);
    /** Value of a key, invalid if there is none. */
    QVariant data(int key) const;

    /**
     * Sets the stream of a record slot; it has to outlive the row, or its place in it.
     * @return false for a negative slot
     */
    bool setMetaData(int slot, Tellarix::DataModel::Stream *stream);
    /** Stream of a slot, null if there is none. */
    Tellarix::DataModel::Stream *metaData(int slot) const;
    /** Number of slots up to the last one that was given a stream. */
    int metaDataCount() const { return _metaData.size(); }
    /** Codes of the slot's stream, or without one those of the data keys 0 to 3. */
    Tellarix::DataModel::WaveformStreamID waveformID(int slot) const;

    Tellarix::Gui::RecordWidget *recordWidget() const { return _recordWidget; }
    /** Shows the records of this slot. */
    void showSlot(int slot);

    /**
     * Puts a widget above the traces, with which it shares the height of the row; the row owns it.
     * The extra widget stands beside both. Null deletes the one that there is.
     */
    void setUpperWidget(QWidget *widget);
    QWidget *upperWidget() const { return _upperWidget; }
    /** Puts a widget at the right-hand end of the header, which owns it. */
    void addHeaderWidget(QWidget *widget);
    void setHeaderVisible(bool visible);
    /** Shows a widget above all of the row, such as the title of a group that begins with it, and
     *  owns it; deletes the one before. Null removes it. */
    void setHeading(QWidget *heading);
    QWidget *heading() const { return _heading; }
    /** Shows a widget right of the traces and owns it; deletes the one before. Null removes it. */
    void setExtraWidget(QWidget *widget);
    QWidget *extraWidget() const { return _extraWidget; }

    /** Room above and below the row and between its parts in pixels; the sides stay as they are, so
     *  that the traces keep standing over a shared time scale. */
    void setVerticalPadding(int margin, int spacing);
    /** Lets rows stand without any room between them, and gives them their room again. */
    void clearVerticalSpacing();
    void restoreVerticalSpacing();

    /**
     * Shows a single record in a slot; null clears the slot.
     * @param fit            keeps the whole record in view when the row is resized
     * @param autoAmplitude  sets an amplitude range that is symmetric about the mean; only for
     *                       floating point samples
     */
    void setRecord(const Tellarix::Record *record, bool fit = true, bool autoAmplitude = true,
                   int slot = 0);

    /** The row's own time axis, null unless it is enabled. */
    Tellarix::Gui::TimeScale *timeAxis() const { return _timeAxis; }

    /** A row of the same label without parent, records and meta data; the caller owns it. */
    virtual Trace *clone() const;
    /** @param interactive  lets the axis change the range of this row */
    virtual void setTimeAxisEnabled(bool enable, bool interactive = false);
    /** Returns false if nothing has changed. */
    virtual bool setSelected(bool selected);
    /** Removes all slots and meta data; label and data stay, and so do bindings in a view. */
    virtual void reset();

public slots:
    /** Shows seconds relative to the alignment, at @p pps pixels per second. */
    void setDisplay(double tmin, double tmax, double pps);
    void setAlignment(Tellarix::Core::Time time);
    /** Sets the width of the amplitude axis with its room, in pixels. */
    void setSpacing(int pixels);
    /** Shows a range that the time axis asks for; only for rows that have one. */
    void setTimeRange(double tmin, double tmax);

signals:
    /** A mouse button was released over the row. */
    void clicked(QMouseEvent *e);

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct TraceItemData
    {
        int key{0};
        QVariant value;
    };

    void init(const QColor &color);
    void initRecordWidget();
    void initLayout();
    void addGrid();
    void renewGrid();
    int rowBelowUpper(int row) const;
    void addExtraWidget(QGridLayout *layout);
    QGridLayout *grid() const;
    void addTimeAxis();
    void showWindow(Tellarix::Core::Time start, Tellarix::Core::Time end);
    void drawPanel(QPainter &painter);
    void drawItem(QPainter &painter);

    friend class TraceView;

    TraceView *_view{nullptr}; /**< that the row stands in */
    ColorBar *_colorBar{nullptr};
    RowLabel *_labelWidget{nullptr};
    Tellarix::Gui::TimeScale *_timeAxis{nullptr};
    Tellarix::Gui::RecordWidget *_recordWidget{nullptr};
    QWidget *_axisSpacer{nullptr};
    QWidget *_extraWidget{nullptr};
    QWidget *_upperWidget{nullptr};
    QWidget *_heading{nullptr};
    bool _selected{false};
    bool _dataRequested{false};
    QString _label;
    QVector<TraceItemData> _itemData;
    QVector<Tellarix::DataModel::Stream *> _metaData;
    bool _static{false};
    bool _fitToRecord{false};
    QWidget *_header{nullptr};
};

} // namespace Gui
} // namespace Norvu
