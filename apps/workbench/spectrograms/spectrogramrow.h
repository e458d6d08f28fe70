// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "amplitudecolors.h"
#include "picturepen.h"
#include "rowhint.h"
#include "spectrogramplace.h"
#include "stretchplan.h"

#include <norvu/gui/spectrogramaxis.h>
#include <norvu/gui/spectrogramrecordwidget.h>

#include <QPointer>

#include <deque>

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

    void setPlace(SpectrogramPlace place);
    /** Has the spectrogram painted by @p band, a neighbour above this widget, as long as it lives.
     */
    void setBand(QWidget *band);
    /** To be called when the band has another place or size. */
    void followBand();
    /** Paints what belongs into the band; the painter's origin is that of this widget. */
    void paintBand(QPainter &painter);
    /** Where the picture stands, in coordinates of this widget. */
    QRect pictureRect() const { return spectrogramRect(); }
    /** Whether traces can be seen: not where the picture stands in their place. */
    bool areTracesShown() const;
    /** Whether anything of the row, or its band, can be seen. */
    bool isInSight() const;

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

signals:
    /** The row is painted and isn't complete. */
    void incomplete();
    void amplitudeRangeChanged();
    void wantedChanged();
    void axisChanged();
    void colorsChanged();
    /** The picture has another place or size. */
    void pictureMoved();
    /** The user wants colours in which the picture can be seen. */
    void rangeFitRequested();

protected:
    QRect spectrogramRect() const override;
    void changedRecords(int slot, Tellarix::RecordSequence *sequence) override;
    void customPaintTracesBegin(QPainter &painter) override;
    void customPaintTracesEnd(QPainter &painter) override;
    void drawSpectrogram(QPainter &painter) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
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
    StretchPlan plan() const;
    void goOn(const StretchPlan &plan);
    void beginAnew(const StretchPlan &plan);
    void keepFormer();
    void forgetFormer();
    void applyColors();
    double unitFactor() const;
    double samplesPerPixel() const;
    void setMemoryHint(const QString &hint);
    QColor quietColor() const;
    bool coversTraces() const;
    void updateTracePen();
    void updateHint();
    void drawAlignment(QPainter &painter) const;

    Norvu::Gui::SpectrogramSettings _axis;
    AmplitudeColors _colors;
    ColorTable _table;
    RowHint _hint;
    QString _memoryHint;
    Tellarix::Core::TimeWindow _memoryWindow; /**< was visible when that hint was given */
    Content _content;
    std::deque<SpectrogramItem> _former; /**< painted until the new ones have come so far */
    QPair<double, double> _formerRange;  /**< in the unit of the samples */
    bool _hasBeenComplete{false};        /**< since the spectrogram was begun */
    bool _wanted{false};
    SpectrogramPlace _place{SpectrogramPlace::Behind};
    PicturePen _pen;
    QPointer<QWidget> _band;
};

} // namespace Workbench
