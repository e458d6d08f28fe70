// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>
#include <tellarix/qt/records/ruler.h>

namespace Tellarix {
namespace Gui {

/**
 * A ruler for seconds relative to an alignment time.
 *
 * With absolute times ticks stand at round times of the day and the texts are clock times with the
 * date below them; otherwise ticks stand at round distances from the alignment and the texts are
 * signed spans such as "-30s" or "+1:05:00". Texts never collide, whatever the zoom.
 */
class TELLARIX_GUI_API TimeScale : public Ruler
{
    Q_OBJECT

public:
    explicit TimeScale(QWidget *parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags(),
                       Position position = Bottom);

    Core::Time alignment() const { return _alignment; }
    bool isAbsoluteTimeEnabled() const { return _absoluteTime; }

    /**
     * Shows absolute or relative times.
     * @param absoluteDate  also shows the date below absolute times
     */
    void setAbsoluteTimeEnabled(bool enable, bool absoluteDate = true);
    /** Adds a line with local time, marked as such, to absolute times; off at the start. */
    void setLocalTimeShown(bool show);

    /** Time at a value of the ruler, and its inverse. */
    Core::Time timeAt(double value) const { return _alignment + Core::TimeSpan(value); }
    double valueOf(Core::Time time) const { return (time - _alignment).length(); }

public slots:
    void setAlignment(Tellarix::Core::Time alignment);

protected:
    bool getTickText(double value, double nextValue, int line, QString &text) const override;
    void chooseSpacing(double minimumPixels, double &major, double &minor) const override;
    bool endsOnPixels() const override { return false; }
    int lineCount() const override;
    double labelExtent(double major) const override;
    /** A time offset that puts ticks at round UTC times: multiples of the day's parts, or of days
     *  counted from 1970-01-01, exact to the microsecond. */
    double alignedOffset(double major) const override;
    QVector<RulerLabel> labels(int line) const override;

private:
    int dateLine() const;
    int localTimeLine() const;
    bool absoluteText(Core::Time time, double spacing, int line, QString &text) const;

    Core::Time _alignment;
    bool _absoluteTime{false};
    bool _absoluteDate{true};
    bool _localTime{false};
};

/**
 * Round distances of time ticks: 1-2-5 below a second, then steps of clock and calendar up to
 * days, then 1-2-5 times days.
 * @param distance  least distance of labelled ticks in seconds
 */
TELLARIX_GUI_API void roundTimeDistance(double distance, double &major, double &minor);

/** A span as "-30s", "+1:05:00", "+2d 03:00", with as many decimals as ticks of @p spacing need. */
TELLARIX_GUI_API QString timeSpanText(double seconds, double spacing);

} // namespace Gui
} // namespace Tellarix
