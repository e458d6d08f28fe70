// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "amplitudecolors.h"

#include <norvu/gui/spectrogramaxis.h>
#include <norvu/gui/spectrogramrecordwidget.h>

#include <QPen>

#include <deque>
#include <optional>

namespace Workbench {

/**
 * The traces of a row with the spectrogram of its first slot, if it is wanted.
 *
 * The spectrogram is worked out for a stretch of time about the visible one, a piece at a time: the
 * row tells when a piece is missing, and whoever hears it asks for it when there is time.
 */
class SpectrogramRow : public Norvu::Gui::SpectrogramRecordWidget
{
    Q_OBJECT

public:
    explicit SpectrogramRow(QWidget *parent = nullptr);

    void setWanted(bool wanted);
    bool isWanted() const { return _wanted; }

    /** Sets the axis; what was worked out is dropped. */
    void setAxis(const Norvu::Gui::SpectrogramSettings &settings);
    const Norvu::Gui::SpectrogramSettings &axis() const { return _axis; }

    void setColors(const AmplitudeColors &colors);
    const AmplitudeColors &colors() const { return _colors; }
    /** Whether there is anything of a picture. */
    bool hasPicture() const { return spectrogramSize() > 0 || !_former.empty(); }
    /** Smallest and largest amplitude in the picture, in the unit; (0, 0) without one. */
    QPair<double, double> amplitudeRange() const;
    /** Takes over the unit of the row, or its scale, if it is another. */
    void followUnit();
    /** Unit of amplitudes. */
    QString unit() const;
    /** What is under the pointer, empty where there is no spectrogram. */
    QString spectrogramText(const QPoint &point) const;

    /** Whether the visible records, of those that there are, have been worked out. */
    bool isComplete() const;
    /** Bytes that the whole stretch takes that workOut() works out. */
    double memoryNeeded() const;
    /** Bytes that are taken now, also by a former picture. */
    size_t memoryUsed() const { return spectrogramSize() + sizeOf(_former); }
    /** Whether it takes much more than what is visible now needs. */
    bool isOversized() const;
    /**
     * Works out the next piece of the visible stretch, unless it is complete.
     * @param memory  bytes that the whole stretch may take; with less than it needs the row is
     *                emptied and says so in its picture
     * @return false if there was nothing to do or no room for it
     */
    bool workOut(size_t memory);
    /** Drops what was worked out. */
    void release();

    void fed(int slot, const Tellarix::Record *record) override;

public slots:
    void setInFront(bool inFront);

signals:
    /** The row is painted and isn't complete. */
    void incomplete();
    void amplitudeRangeChanged();
    void wantedChanged();
    void axisChanged();
    void colorsChanged();

protected:
    void changedRecords(int slot, Tellarix::RecordSequence *sequence) override;
    void customPaintTracesBegin(QPainter &painter) override;
    void customPaintTracesEnd(QPainter &painter) override;
    void drawSpectrogram(QPainter &painter) override;
    void hideEvent(QHideEvent *event) override;

private:
    /** What a spectrogram was made of. */
    struct Content
    {
        Tellarix::RecordCPtr first;
        Tellarix::RecordCPtr last;
        int count{0};

        bool operator==(const Content &other) const;
    };

    const Tellarix::RecordSequence *source() const;
    Content content() const;
    bool isOfTheseRecords() const;
    bool isUpToDate() const;
    double samplingFrequency() const;
    Tellarix::Core::TimeWindow visibleData() const;
    Tellarix::Core::TimeWindow wantedStretch() const;
    double stretchMemory() const;
    double samplesPerPixel() const;
    int wantedInterval() const;
    bool hasFittingColumns() const;
    bool canGoOn(const Tellarix::Core::TimeWindow &stretch) const;
    void goOn(const Tellarix::Core::TimeWindow &stretch);
    void beginAnew(const Tellarix::Core::TimeWindow &stretch);
    void keepFormer();
    void forgetFormer();
    void applyColors();
    Tellarix::Core::TimeSpan pieceLength() const;
    double unitFactor() const;
    void setHint(const QString &hint);
    QColor quietColor() const;
    bool coversTraces() const;
    void updateTracePen();
    void restorePen();
    QString hint() const;
    void drawAlignment(QPainter &painter) const;
    void drawHint(QPainter &painter) const;

    Norvu::Gui::SpectrogramSettings _axis;
    AmplitudeColors _colors;
    ColorTable _table;
    QString _hint;
    Tellarix::Core::TimeWindow _hintWindow; /**< was visible when the hint was given */
    Content _content;
    std::deque<SpectrogramItem> _former; /**< painted until the new ones have come so far */
    QPair<double, double> _formerRange;  /**< in the unit of the samples */
    bool _hasBeenComplete{false};        /**< since the spectrogram was begun */
    std::optional<QPen> _ownPen;         /**< that the traces have without a picture */
    bool _hasPictureColor{false}; /**< traces have a colour that can be seen above the picture */
    bool _wanted{false};
    bool _inFront{false};
};

} // namespace Workbench
