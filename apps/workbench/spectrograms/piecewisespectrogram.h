// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "stretchplan.h"

#include <norvu/gui/spectrogramrecordwidget.h>
#include <tellarix/core/records/record.h>

#include <deque>

namespace Workbench {

/**
 * Traces with the spectrogram of their first slot, if it is wanted.
 *
 * The spectrogram is worked out for a stretch of time about the visible one, a piece at a time: the
 * row tells when a piece is missing, and whoever hears it asks for it when there is time.
 */
class PiecewiseSpectrogram : public Norvu::Gui::SpectrogramRecordWidget
{
    Q_OBJECT

public:
    explicit PiecewiseSpectrogram(QWidget *parent = nullptr);

    void setWanted(bool wanted);
    bool isWanted() const { return _wanted; }

    /** Sets the axis; what was worked out is dropped. */
    void setAxis(const Norvu::Gui::SpectrogramSettings &settings);
    const Norvu::Gui::SpectrogramSettings &axis() const { return _axis; }

    /** Whether there is anything of a picture. */
    bool hasPicture() const { return spectrogramSize() > 0 || !_former.empty(); }
    /** Whether the visible records, of those that there are, have been worked out. */
    bool isComplete() const;
    /** Bytes that the whole stretch takes that workOut() works out. */
    double memoryNeeded() const;
    /** Bytes that are taken now, also by a former picture. */
    size_t memoryUsed() const { return spectrogramSize() + sizeOf(_former); }
    /** Whether it takes much more than what is visible now needs. */
    bool isOversized() const;
    /** Bytes that what is visible needs, if workOut() was not given so many; otherwise 0. */
    double lackingMemory() const;
    /**
     * Works out the next piece of the visible stretch, unless it is complete.
     * @param memory  bytes that the whole stretch may take; with less than it needs the row is
     *                emptied
     * @return false if there was nothing to do or no room for it
     */
    bool workOut(size_t memory);
    /** Drops what was worked out. */
    void release();

    void fed(int slot, const Tellarix::Record *record) override;

signals:
    /** The picture is painted and isn't complete. */
    void incomplete();
    void amplitudeRangeChanged();
    void wantedChanged();
    void axisChanged();

protected:
    static constexpr int Slot = 0;

    /** Smallest and largest value of the picture. */
    QPair<double, double> valueRange() const;
    /** A value below which lies but a small part of the picture in view: where the filters run in
     *  there is next to nothing. */
    double quietValue() const;
    /** The records that the spectrogram is made of; may be null. */
    const Tellarix::RecordSequence *source() const;
    /** Whether what was worked out is of the records that there are now. */
    bool isOfTheseRecords() const;
    /** Whether there is a picture of most of the data in view. */
    bool showsMostData() const;
    double samplesPerPixel() const;
    void forgetFormerImages();

    void changedRecords(int slot, Tellarix::RecordSequence *sequence) override;
    void drawSpectrogram(QPainter &painter) override;

private:
    /** What a spectrogram was made of. */
    struct Content
    {
        Tellarix::RecordCPtr first;
        Tellarix::RecordCPtr last;
        int count{0};

        bool operator==(const Content &other) const;
    };

    Content content() const;
    bool isUpToDate() const;
    double samplingFrequency() const;
    StretchPlan plan() const;
    void goOn(const StretchPlan &plan);
    void beginAnew(const StretchPlan &plan);
    void keepFormer();
    void forgetFormer();

    Norvu::Gui::SpectrogramSettings _axis;
    Content _content;
    std::deque<SpectrogramItem> _former; /**< painted until the new ones have come so far */
    QPair<double, double> _formerRange;  /**< in the unit of the samples */
    bool _hasBeenComplete{false};        /**< since the spectrogram was begun */
    double _lackingMemory{0};
    Tellarix::Core::TimeWindow _lackingWindow; /**< was visible when memory was lacking */
    bool _wanted{false};
};

} // namespace Workbench
