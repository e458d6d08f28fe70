// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/scheme.h>

#include <tellarix/qt/application.h>

#include <QGuiApplication>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

constexpr double TextContrast = 4.5;
constexpr double LineContrast = 3.0;

/** The same role in light and in dark surroundings. */
struct Shade
{
    QRgb light;
    QRgb dark;

    QColor in(bool dark_) const { return QColor::fromRgb(dark_ ? dark : light); }
};

constexpr Shade Trace{0xff1f3044, 0xffd5deea};
constexpr Shade AlternateTrace{0xff1668a8, 0xff6cb6f0};
constexpr Shade Alignment{0xffc0392b, 0xffff8a75};
constexpr Shade Gap{0xffe0a11a, 0xffc98f1c};
constexpr Shade Overlap{0xff7d4fc4, 0xffa582e8};
constexpr Shade Cursor{0xff5b6b7c, 0xff9fb0c2};
constexpr Shade Marker{0xff0f7a45, 0xff5ed08e};
constexpr Shade Waiting{0xffe6b422, 0xffe6b422};
constexpr Shade Present{0xff2e9e57, 0xff43c274};
constexpr Shade Missing{0xffcf3a3a, 0xffee6a62};
constexpr Shade Automatic{0xffc62f2f, 0xffff8078};
constexpr Shade Manual{0xff177a3d, 0xff5fd089};
constexpr Shade Water{0xffd6e4ee, 0xff18222c};
constexpr Shade Land{0xfff5f2eb, 0xff343738};
constexpr Shade Coast{0xff8096a8, 0xff70808c};
constexpr Shade Country{0xff968a8e, 0xff867e80};
constexpr Shade Province{0xffcdc6c4, 0xff525252};
constexpr Shade River{0xffaac6dc, 0xff32485c};

double linear(double channel)
{
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

QColor mixed(const QColor &a, const QColor &b, double shareOfB)
{
    const auto mix = [shareOfB](double x, double y) { return x + (y - x) * shareOfB; };
    return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()),
                            mix(a.blueF(), b.blueF()));
}

QColor translucent(QColor color, double alpha)
{
    color.setAlphaF(alpha);
    return color;
}

QPen hairline(const QColor &color, Qt::PenStyle style = Qt::SolidLine)
{
    QPen pen(color, 1, style);
    pen.setCosmetic(true);
    return pen;
}

/** Shallow earthquakes are red, the deepest ones violet. */
Gradient depthColors()
{
    Gradient gradient;
    gradient.setColorAt(0, QColor(204, 0, 0));
    gradient.setColorAt(35, QColor(230, 120, 0));
    gradient.setColorAt(70, QColor(214, 180, 0));
    gradient.setColorAt(150, QColor(40, 150, 60));
    gradient.setColorAt(300, QColor(30, 90, 200));
    gradient.setColorAt(600, QColor(120, 40, 160));
    return gradient;
}

QPalette presentPalette()
{
    // Without an application object, asking for its palette would not give usable colours.
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr
               ? QGuiApplication::palette()
               : QPalette(Qt::black, QColor(239, 239, 239), Qt::white, Qt::darkGray, Qt::gray,
                          Qt::black, Qt::white, Qt::white, QColor(239, 239, 239));
}

} // namespace

double contrastRatio(const QColor &a, const QColor &b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor readableColor(const QColor &color, const QColor &background, double ratio)
{
    // On a mid grey only one of the two ends may be far enough away.
    const QColor far = contrastRatio(Qt::black, background) > contrastRatio(Qt::white, background)
                           ? QColor(Qt::black)
                           : QColor(Qt::white);
    constexpr int Steps = 20;
    for (int i = 0; i < Steps; ++i) {
        const QColor candidate = mixed(color, far, static_cast<double>(i) / Steps);
        if (contrastRatio(candidate, background) >= ratio)
            return candidate;
    }
    return far;
}

QColor problemColor(const QColor &background)
{
    constexpr double TextContrast = 4.5; // WCAG 2.1, level AA
    return readableColor(Scheme::Current().status.missing, background, TextContrast);
}

Scheme::Scheme() : Scheme(presentPalette())
{}

Scheme::Scheme(const QPalette &palette)
{
    setPalette(palette);
}

const Scheme &Scheme::Current()
{
    if (const Application *application = Application::Instance())
        return application->scheme();

    static Scheme scheme{presentPalette()};
    static qint64 key = presentPalette().cacheKey();
    const QPalette palette = presentPalette();
    if (palette.cacheKey() != key) {
        key = palette.cacheKey();
        scheme.setPalette(palette);
    }
    return scheme;
}

void Scheme::setPalette(const QPalette &palette)
{
    _dark = luminance(palette.color(QPalette::Base)) < luminance(palette.color(QPalette::Text));
    takeRecordColors(palette);
    takeOtherColors(palette);
    takeMapColors(palette);
}

void Scheme::takeRecordColors(const QPalette &palette)
{
    const QColor base = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    const auto readable = [&](const Shade &shade, double ratio) {
        return readableColor(shade.in(_dark), base, ratio);
    };

    records.foreground = readable(Trace, TextContrast);
    records.alternateForeground = readable(AlternateTrace, TextContrast);
    records.background = base;
    records.alignment = readable(Alignment, LineContrast);
    records.gap = translucent(Gap.in(_dark), 0.25);
    records.overlap = translucent(Overlap.in(_dark), 0.3);
    records.selection = translucent(palette.color(QPalette::Highlight), 0.25);
    records.cursor = readable(Cursor, LineContrast);
    records.marker = readable(Marker, TextContrast);
    records.gridMajor = hairline(mixed(base, text, 0.2));
    // Minor ticks stand at the major ones too, and must not hide their lines.
    records.gridMinor = hairline(translucent(text, 0.09));
    records.frame = hairline(readableColor(mixed(base, text, 0.5), base, LineContrast));
    records.offsetLine = hairline(mixed(base, text, 0.35), Qt::DashLine);
}

void Scheme::takeOtherColors(const QPalette &palette)
{
    const QColor base = palette.color(QPalette::Base);
    const QColor window = palette.color(QPalette::Window);

    rulers.foreground = readableColor(palette.color(QPalette::WindowText), window, TextContrast);
    rulers.background = window;
    rulers.selection = translucent(palette.color(QPalette::Highlight), 0.35);

    status.waiting = Waiting.in(_dark);
    status.present = Present.in(_dark);
    status.missing = Missing.in(_dark);

    origins.automatic = readableColor(Automatic.in(_dark), base, TextContrast);
    origins.manual = readableColor(Manual.in(_dark), base, TextContrast);

    legend.background = translucent(base, 0.85);
    legend.text = readableColor(palette.color(QPalette::Text), base, TextContrast);
    legend.header = legend.text;
    legend.border = readableColor(mixed(base, legend.text, 0.5), base, LineContrast);
}

void Scheme::takeMapColors(const QPalette &palette)
{
    map.depthGradient = depthColors();
    map.water = Water.in(_dark);
    map.land = Land.in(_dark);
    map.coast = Coast.in(_dark);
    map.country = Country.in(_dark);
    map.province = Province.in(_dark);
    map.river = River.in(_dark);
    map.graticule = translucent(palette.color(QPalette::Text), 0.18);
    map.label = readableColor(palette.color(QPalette::Text), map.land, TextContrast);
    map.outside = palette.color(QPalette::Window);
}

} // namespace Gui
} // namespace Tellarix
