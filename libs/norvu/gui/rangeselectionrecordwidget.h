// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/core/time.h>
#include <tellarix/qt/records/recordwidget.h>

namespace Norvu {
namespace Gui {

/**
 * A record widget that shows the time range which the user drags out with the left button as a
 * band behind the traces. The band lasts as long as the drag: what becomes of the range is up to
 * whoever connects selectedTimeRange().
 */
class NORVU_GUI_API RangeSelectionRecordWidget : public Tellarix::Gui::RecordWidget
{
    Q_OBJECT

public:
    explicit RangeSelectionRecordWidget(QWidget *parent = nullptr);
    explicit RangeSelectionRecordWidget(const Tellarix::DataModel::WaveformStreamID &streamID,
                                        QWidget *parent = nullptr);

    /** Shows or hides the band; ranges are selected in either case. */
    void setDrawSelection(bool draw);

public slots:
    /** Shows the band from @p start to @p end; equal times show none. */
    void onChangingTimeRange(Tellarix::Core::Time start, Tellarix::Core::Time end);
    /** Takes the band away; which range was selected doesn't matter. */
    void onSelectedTimeRange(Tellarix::Core::Time start, Tellarix::Core::Time end);

protected:
    void drawCustomBackground(QPainter &painter) override;

private:
    void init();

    Tellarix::Core::Time _selectionStart;
    Tellarix::Core::Time _selectionEnd;
    bool _drawSelection{true};
};

} // namespace Gui
} // namespace Norvu
