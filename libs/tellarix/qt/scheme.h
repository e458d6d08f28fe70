#pragma once

#include <tellarix/qt/api.h>

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QPen>

namespace Tellarix {
namespace Gui {

/**
 * Colours, sizes, pens and precisions that all views share.
 *
 * A new scheme fits the palette that it is made for, light or dark. Every colour has a contrast to
 * the palette's base colour at which it can be read.
 */
class TELLARIX_GUI_API Scheme
{
public:
    /** A scheme for the application's palette, or a light one without an application. */
    Scheme();
    explicit Scheme(const QPalette &palette);

    /** Takes the colours of another palette; sizes, flags and precisions stay. */
    void setPalette(const QPalette &palette);
    /** True if the palette's base is dark. */
    bool isDark() const { return _dark; }

    struct Records
    {
        QColor foreground;          /**< traces */
        QColor alternateForeground; /**< second and further overlaid traces */
        QColor background;          /**< canvas; usually the palette's base */
        QColor alignment;           /**< line at the alignment time */
        QColor gap;                 /**< shade of stretches without data */
        QColor overlap;             /**< shade of stretches with more than one record */
        QColor selection;           /**< selected time range, translucent */
        QColor cursor;              /**< hover cursor */
        QColor marker;              /**< markers without a colour of their own */
        QPen gridMajor;             /**< lines at labelled ticks */
        QPen gridMinor;             /**< lines at ticks between them */
        QPen frame;                 /**< frame and axis of the canvas */
        QPen offsetLine;            /**< line at the amplitude offset; alpha 0 draws none */
        int lineWidth{1};           /**< of traces and markers, in pixels */
        bool antiAliasing{false};   /**< smooth slanted lines where samples are far apart */
        bool optimize{true};        /**< polylines hold what pixels can show, not every sample */
        bool showEngineeringValues{false};
    };

    struct Rulers
    {
        QColor foreground;
        QColor background;
        QColor selection; /**< band of a selected range */
        int majorTick{6}; /**< lengths in pixels */
        int minorTick{3};
    };

    struct Status
    {
        QColor waiting; /**< data have been asked for */
        QColor present; /**< data are there */
        QColor missing; /**< no data came */
    };

    struct Precision
    {
        int depth{0};        /**< decimals, in km */
        int distance{1};     /**< decimals */
        int location{2};     /**< decimals of latitude and longitude, in degrees */
        int magnitude{1};    /**< decimals */
        int originTime{0};   /**< decimals of seconds */
        int cursorTime{3};   /**< decimals of seconds under the pointer */
    };

    Records records;
    Rulers rulers;
    Status status;
    Precision precision;

private:
    bool _dark{false};
};

} // namespace Gui
} // namespace Tellarix
