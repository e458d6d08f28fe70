// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/gradients.h>

#include <QAbstractButton>
#include <QPalette>

namespace Norvu {
namespace Gui {

namespace {

struct ColorEntry
{
    double key;
    int red;
    int green;
    int blue;
    int alpha;
};

constexpr ColorEntry DefaultMap[] = {
    {0.0, 0, 0, 0, 0},     {0.2, 0, 0, 255, 128},   {0.4, 0, 255, 255, 255},
    {0.6, 0, 255, 0, 255}, {0.8, 255, 255, 0, 255}, {1.0, 255, 0, 0, 255},
};

constexpr ColorEntry SpectrumMap[] = {
    {0.0, 255, 0, 255, 255}, {0.2, 0, 0, 255, 255},   {0.4, 0, 255, 255, 255},
    {0.6, 0, 255, 0, 255},   {0.8, 255, 255, 0, 255}, {1.0, 255, 0, 0, 255},
};

constexpr ColorEntry InfernoMap[] = {
    {0, 1, 0, 4, 255},
    {1.0 / 7, 48, 7, 84, 255},
    {2.0 / 7, 105, 15, 111, 255},
    {3.0 / 7, 158, 40, 100, 255},
    {4.0 / 7, 208, 72, 67, 255},
    {5.0 / 7, 239, 125, 21, 255},
    {6.0 / 7, 242, 194, 35, 255},
    {1, 245, 255, 163, 255},
};

constexpr ColorEntry PlasmaMap[] = {
    {0.0, 13, 8, 135, 255},   {0.1, 65, 4, 157, 255},   {0.2, 106, 0, 168, 255},
    {0.3, 143, 13, 164, 255}, {0.4, 177, 42, 144, 255}, {0.5, 203, 70, 121, 255},
    {0.6, 225, 100, 98, 255}, {0.7, 241, 131, 76, 255}, {0.8, 252, 165, 55, 255},
    {0.9, 252, 205, 37, 255}, {1.0, 240, 249, 33, 255},
};

constexpr ColorEntry BlackBodyMap[] = {
    {0, 0, 0, 0, 255},
    {0.142857142857, 64, 23, 18, 255},
    {0.285714285714, 126, 31, 28, 255},
    {0.428571428571, 184, 50, 33, 255},
    {0.571428571429, 219, 101, 10, 255},
    {0.714285714286, 228, 161, 3, 255},
    {0.857142857143, 233, 216, 57, 255},
    {1, 255, 255, 255, 255},
};

constexpr ColorEntry BlackWhiteMap[] = {
    {0, 0, 0, 0, 255},
    {1, 255, 255, 255, 255},
};

constexpr ColorEntry WhiteBlackMap[] = {
    {0, 255, 255, 255, 255},
    {1, 0, 0, 0, 255},
};

constexpr ColorEntry PuRdMap[] = {
    {0, 247, 244, 249, 255}, {1, 231, 225, 239, 255}, {2, 212, 185, 218, 255},
    {3, 201, 148, 199, 255}, {4, 223, 101, 176, 255}, {5, 231, 41, 138, 255},
    {6, 206, 18, 86, 255},   {8, 145, 0, 63, 255},
};

constexpr ColorEntry BuPuMap[] = {
    {0, 247, 252, 253, 255}, {1, 224, 236, 244, 255}, {2, 191, 211, 230, 255},
    {3, 158, 188, 218, 255}, {4, 140, 150, 198, 255}, {5, 140, 107, 177, 255},
    {6, 136, 65, 157, 255},  {8, 110, 1, 107, 255},
};

constexpr ColorEntry RdYlBuMap[] = {
    {0, 215, 48, 39, 255},   {1, 244, 109, 67, 255},  {2, 253, 174, 97, 255},
    {3, 254, 224, 144, 255}, {4, 224, 243, 248, 255}, {5, 171, 217, 233, 255},
    {6, 116, 173, 209, 255}, {8, 69, 117, 180, 255},
};

constexpr ColorEntry BluesMap[] = {
    {0, 247, 251, 255, 255}, {1, 222, 235, 247, 255}, {2, 198, 219, 239, 255},
    {3, 158, 202, 225, 255}, {4, 107, 174, 214, 255}, {5, 66, 146, 198, 255},
    {6, 33, 113, 181, 255},  {8, 8, 69, 148, 255},
};

constexpr ColorEntry CircleMap[] = {
    {0, 255, 0, 0, 255},  {1, 255, 128, 0, 255}, {2, 255, 255, 0, 255},  {3, 128, 255, 0, 255},
    {4, 0, 255, 0, 255},  {5, 0, 255, 128, 255}, {6, 0, 255, 255, 255},  {7, 0, 128, 255, 255},
    {8, 0, 0, 255, 255},  {9, 128, 0, 255, 255}, {10, 255, 0, 255, 255}, {11, 255, 0, 128, 255},
    {12, 255, 0, 0, 255},
};

constexpr ColorEntry ParulaMap[] = {
    {0.0, 25, 20, 76, 255},   {0.1, 53, 42, 135, 255},   {0.2, 15, 92, 221, 255},
    {0.3, 18, 125, 216, 255}, {0.4, 7, 156, 207, 255},   {0.5, 21, 177, 180, 255},
    {0.6, 89, 189, 140, 255}, {0.7, 165, 190, 107, 255}, {0.8, 225, 185, 82, 255},
    {0.9, 252, 206, 46, 255}, {1.0, 249, 251, 14, 255},
};

constexpr ColorEntry ViridisMap[] = {
    {0.0, 68, 1, 84, 255},    {0.1, 72, 36, 117, 255},  {0.2, 65, 68, 135, 255},
    {0.3, 53, 95, 141, 255},  {0.4, 42, 120, 142, 255}, {0.5, 33, 144, 141, 255},
    {0.6, 34, 168, 132, 255}, {0.7, 66, 190, 113, 255}, {0.8, 119, 209, 83, 255},
    {0.9, 186, 222, 40, 255}, {1.0, 253, 231, 37, 255},
};

void generate(Tellarix::Gui::Gradient &gradient, int count, const ColorEntry *entries)
{
    for (int i = 0; i < count; ++i) {
        const ColorEntry &entry = entries[i];
        gradient.setColorAt(entry.key, QColor(entry.red, entry.green, entry.blue, entry.alpha),
                            QString());
    }
}

template <int Count>
Tellarix::Gui::Gradient generated(const ColorEntry (&entries)[Count])
{
    Tellarix::Gui::Gradient gradient;
    generate(gradient, Count, entries);
    return gradient;
}

// Rec. 709 weights times 10000 of a colour's 8-bit channels.
int luminance(const QColor &color)
{
    return 2126 * color.red() + 7152 * color.green() + 722 * color.blue();
}

constexpr int DarkBelow = 1610000;

/** The fraction of an index times the golden ratio, in single precision. */
float goldenFraction(int index)
{
    const float hue = static_cast<float>(index) * 0.618034f;
    return hue > 1.0f ? hue - static_cast<float>(static_cast<int>(hue)) : hue;
}

} // namespace

namespace Gradients {

const Tellarix::Gui::Gradient Default = generated(DefaultMap);
const Tellarix::Gui::Gradient Spectrum = generated(SpectrumMap);
const Tellarix::Gui::Gradient Inferno = generated(InfernoMap);
const Tellarix::Gui::Gradient Plasma = generated(PlasmaMap);
const Tellarix::Gui::Gradient BlackBody = generated(BlackBodyMap);
const Tellarix::Gui::Gradient WhiteBlack = generated(WhiteBlackMap);
const Tellarix::Gui::Gradient BlackWhite = generated(BlackWhiteMap);
const Tellarix::Gui::Gradient PuRd = generated(PuRdMap);
const Tellarix::Gui::Gradient BuPu = generated(BuPuMap);
const Tellarix::Gui::Gradient RdYlBu = generated(RdYlBuMap);
const Tellarix::Gui::Gradient Blues = generated(BluesMap);
const Tellarix::Gui::Gradient Circle = generated(CircleMap);
const Tellarix::Gui::Gradient Parula = generated(ParulaMap);
const Tellarix::Gui::Gradient Viridis = generated(ViridisMap);

const QMap<QString, const Tellarix::Gui::Gradient *> Registry{
    {"Default", &Default},       {"Spectrum", &Spectrum},   {"Inferno", &Inferno},
    {"Plasma", &Plasma},         {"BlackBody", &BlackBody}, {"BlackWhite", &BlackWhite},
    {"WhiteBlack", &WhiteBlack}, {"PuRd", &PuRd},           {"BuPu", &BuPu},
    {"RdYlBu", &RdYlBu},         {"Blues", &Blues},         {"Circle", &Circle},
    {"Parula", &Parula},         {"Viridis", &Viridis},
};

} // namespace Gradients

const QColor red(0xdb2828);
const QColor orange(0xf2711c);
const QColor yellow(0xfbbd08);
const QColor olive(0xb5cc18);
const QColor green(0x21ba45);
const QColor teal(0x00b5ad);
const QColor blue(0x2185d0);
const QColor violet(0x6435c9);
const QColor purple(0xa333c8);
const QColor pink(0xe03997);
const QColor brown(0xa5673f);
const QColor grey(0x767676);
const QColor black(0x1b1c1d);

bool fillTable(Utils::LUT<double, unsigned int> &table, const Tellarix::Gui::Gradient &gradient,
               bool discrete)
{
    if (gradient.isEmpty())
        return false;
    table.fill(gradient.firstKey(), gradient.lastKey(),
               [&](double key) { return gradient.colorAt(key, discrete).rgba(); });
    return true;
}

void setColor(QAbstractButton *button, const QColor &color, bool autoTextColor,
              const QColor &textColor)
{
    QPalette palette(color);
    palette.setBrush(QPalette::All, QPalette::Button, QBrush(color));
    QColor text = textColor;
    if (autoTextColor)
        text = luminance(color) < DarkBelow ? Qt::white : Qt::black;
    palette.setBrush(QPalette::All, QPalette::ButtonText, QBrush(text));
    button->setPalette(palette);
}

QColor generateColor(int index, int saturation, int value)
{
    return QColor::fromHsv(static_cast<int>(goldenFraction(index) * 359), saturation, value, 255);
}

QColor generateColorF(int index, double a, double b)
{
    return QColor::fromHsvF(0.0, static_cast<double>(goldenFraction(index) * 9972.0f), a, b);
}

} // namespace Gui
} // namespace Norvu
