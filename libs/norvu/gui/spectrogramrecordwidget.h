// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/recordspectrogram.h>
#include <norvu/utils/lut.h>

#include <tellarix/core/baseobject.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QImage>

#include <cstddef>
#include <deque>
#include <vector>

namespace Norvu {
namespace Gui {

/**
 * A record widget that paints the spectrogram of one of its slots behind or in front of the traces.
 *
 * The spectrogram follows the records of the slot: a sequence handed over at once, records that
 * arrive live, and what the sequence drops. A gap or a change of rate begins a new stretch, which
 * starts without history. Nothing is worked out before setSpectrogramEnabled(true), and nothing is
 * seen before setColorLUT().
 *
 * The matrix has a column for each sample of the slot, or for each interval of them; pictures of it
 * are kept for what is in view.
 */
class NORVU_GUI_API SpectrogramRecordWidget : public Tellarix::Gui::RecordWidget
{
    Q_OBJECT

public:
    explicit SpectrogramRecordWidget(QWidget *parent = nullptr);
    explicit SpectrogramRecordWidget(const Tellarix::DataModel::WaveformStreamID &streamID,
                                     QWidget *parent = nullptr);
    ~SpectrogramRecordWidget() override;

    /** Sets the colours of amplitudes; null paints nothing. Not owned; when the content of the
     *  table changes, set it again. */
    void setColorLUT(const Utils::LUT<double, unsigned int> *lut);

    /** Sets the axis; the spectrogram is worked out anew. */
    void setSpectrogramSettings(const SpectrogramSettings &settings);
    /** Periods between @p lower and @p upper seconds on a logarithmic axis. */
    void setSpectrogramSettings(double lower, double upper, int divisions, int bands);
    /** The slot whose records are used; -1, as at the start, for none. */
    void setSpectrogramSlot(int slot);
    /** Whether the filtered records of the slot are used instead of the raw ones. */
    void useFilteredRecords(bool use);

    /**
     * Works out only what lies in a time window, to the sample, so that a view of a long sequence
     * needs no more memory than what it shows; an invalid window, as at the start, for everything.
     * A window with the same start and a later end goes on where the last one ended, any other
     * begins anew without history.
     */
    void setSpectrogramTimeWindow(const Tellarix::Core::TimeWindow &window);
    const Tellarix::Core::TimeWindow &spectrogramTimeWindow() const { return _window; }

    /**
     * Keeps one column of peaks for so many samples, for views in which a pixel stands for more;
     * 1, as at the start, for a column for each sample. The spectrogram is worked out anew.
     */
    void setSpectrogramColumnInterval(int samples);
    int spectrogramColumnInterval() const { return _columnInterval; }

    bool isSpectrogramEnabled() const { return _enabled; }
    bool isSpectrogramDisplayEnabled() const { return _displayEnabled; }

    /** Smallest and largest amplitude of all stretches, in the unit of the samples; (0, 0) without
     *  any. */
    QPair<double, double> spectrogramRange() const;
    /** Memory of all stretches in bytes. */
    size_t spectrogramSize() const { return sizeOf(_items); }
    /**
     * What the spectrogram shows at a point of the widget.
     * @param position   set to where the point stands between the bottom (0) and the top (1) of the
     *                   picture
     * @param amplitude  set to the value of the nearest column and band, in the unit of the samples
     * @return false, leaving the results alone, where there is nothing
     */
    bool spectrogramAt(const QPoint &point, double *position, double *amplitude) const;

    /** Forgets the pictures, but not the data. */
    void clearSpectrogramImages();
    /**
     * Appends a record of the slot's sequence to the spectrogram and drops what the sequence has
     * dropped. A record that begins before the end of what is there is passed over.
     */
    void feedSpectrogram(int slot, const Tellarix::Record *record);

    void fed(int slot, const Tellarix::Record *record) override;

public slots:
    /** Works the spectrogram out anew from the records at hand. */
    void recordsChanged();
    /** Whether records are processed at all; off at the start. Turned off, the data is freed. */
    void setSpectrogramEnabled(bool enable);
    /** Whether the spectrogram is painted; records are processed in either case. */
    void setSpectrogramDisplayEnabled(bool enable);
    void setDrawSpectrogramInFront(bool enable);

protected:
    /** A stretch without gaps and its picture. */
    struct SpectrogramItem
    {
        Tellarix::Core::SmartPointer<RecordSpectrogram<float>> spectrogram;
        QImage image;
        int imageOffset{-1};  /**< column at the left edge of the picture */
        double imageScale{0}; /**< pixels of the picture per second */
        double imageShift{0}; /**< share of that column which lies before the picture */
    };

    void changedRecords(int slot, Tellarix::RecordSequence *sequence) override;
    void customPaintTracesBegin(QPainter &painter) override;
    void customPaintTracesEnd(QPainter &painter) override;
    /** Where the picture stands, from side to side of the canvas: it is the whole canvas here. */
    virtual QRect spectrogramRect() const;
    /** Paints all stretches in view; x is mapTime() of the widget. */
    virtual void drawSpectrogram(QPainter &painter);
    /** Memory of stretches in bytes. */
    static size_t sizeOf(const std::deque<SpectrogramItem> &items);
    /** The records of a slot that its spectrogram is made of, raw or filtered; may be null. */
    Tellarix::RecordSequence *spectrogramRecords(int slot) const;

    std::deque<SpectrogramItem> _items; /**< in the order of time */
    double _minimum{0};                 /**< range of values in all stretches */
    double _maximum{0};

private:
    /** Where a stretch ends, and how it goes on. */
    struct Tail
    {
        Tellarix::Core::Time end;
        double rate{0}; /**< 0: there is no stretch */

        /** Half a sample: up to there, times count as equal. */
        Tellarix::Core::TimeSpan tolerance() const;
        bool covers(const Tellarix::Record &record) const;
        bool continuesWith(const Tellarix::Record &record) const;
    };

    Tail tail() const;
    void addItem();
    void feedWindow(const Tellarix::RecordSequence *sequence,
                    const Tellarix::Core::TimeWindow &window);
    void extendToWindow();
    template <typename Iterator>
    void feedRecords(Iterator begin, Iterator end);
    void feedLast(const std::vector<const Tellarix::Record *> &records);
    void widenRange(const SpectrogramItem &item);
    void trimItems(const Tellarix::Core::TimeWindow &window);
    void drawItem(QPainter &painter, SpectrogramItem &item);

    const Utils::LUT<double, unsigned int> *_colorLUT{nullptr};
    bool _drawInFront{false};
    bool _displayEnabled{true};
    bool _enabled{false};
    bool _useFilteredRecords{false};
    SpectrogramSettings _settings;
    int _slot{-1};
    int _columnInterval{1};
    Tellarix::Core::TimeWindow _window;
};

} // namespace Gui
} // namespace Norvu
