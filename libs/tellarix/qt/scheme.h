// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/gradient.h>

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QPen>

namespace Tellarix {
namespace Gui {

/**
 * Colours, sizes, pens and precisions that all views share.
 *
 * A new scheme fits the palette that it is made for, light or dark. Colours of texts, traces and
 * markers have a contrast of at least 4.5 to the palette's base; those of frames and cursors 3;
 * grids and shades stay faint, but can be told from it.
 */
class TELLARIX_GUI_API Scheme
{
public:
    /** A scheme for the application's palette, or a light one without an application. */
    Scheme();
    explicit Scheme(const QPalette &palette);

    /**
     * The scheme of the application object, or one for the present palette when there is none: for
     * widgets that also live in tests and in foreign hosts. For the GUI thread.
     */
    static const Scheme &Current();

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
        QColor gap;                 /**< shade of gaps */
        QColor overlap;             /**< shade of overlaps */
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

    /** Colours of origins by the way in which they came about. */
    struct Origins
    {
        QColor automatic;
        QColor manual;
    };

    struct Legend
    {
        QColor background;
        QColor border;
        QColor header; /**< title */
        QColor text;
    };

    struct Map
    {
        int originSymbolMinimumSize{9}; /**< in pixels */
        int stationSymbolSize{12};      /**< in pixels */
        Gradient depthGradient;         /**< colours of origins by depth in km */
        bool depthGradientIsDiscrete{false};
        /** Origins are painted as outlines of 4 pixels that are filled only on request, instead of
         *  as translucent discs with outlines of 2. */
        bool filledOutlines{false};

        QColor water;
        QColor land;
        QColor coast;
        QColor country;   /**< borders of countries */
        QColor province;  /**< borders of provinces within countries */
        QColor river;     /**< and shores of lakes */
        QColor graticule; /**< meridians and parallels */
        QColor label;     /**< their labels, and names of cities */
        QColor outside;   /**< beyond the edges of the globe */
    };

    struct Precision
    {
        int depth{0};      /**< decimals, in km */
        int distance{1};   /**< decimals */
        int location{2};   /**< decimals of latitude and longitude, in degrees */
        int magnitude{1};  /**< decimals */
        int originTime{0}; /**< decimals of seconds */
        int cursorTime{3}; /**< decimals of seconds under the pointer */
    };

    Records records;
    Rulers rulers;
    Status status;
    Origins origins;
    Legend legend;
    Map map;
    Precision precision;

private:
    void takeRecordColors(const QPalette &palette);
    void takeOtherColors(const QPalette &palette);
    void takeMapColors(const QPalette &palette);

    bool _dark{false};
};

/** Contrast ratio of two opaque colours, 1 to 21; WCAG 2.1, success criterion 1.4.3. */
TELLARIX_GUI_API double contrastRatio(const QColor &a, const QColor &b);

/** @p color with its lightness moved away from @p background's by as much as @p ratio asks for. */
TELLARIX_GUI_API QColor readableColor(const QColor &color, const QColor &background, double ratio);

/** The current scheme's colour for text that tells what is wrong, readable on @p background. */
TELLARIX_GUI_API QColor problemColor(const QColor &background);

} // namespace Gui
} // namespace Tellarix
