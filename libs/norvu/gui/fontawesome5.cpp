// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/fontawesome5.h>

#include <QFontDatabase>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

namespace Norvu {
namespace FontAwesome5 {

namespace {

constexpr auto ProFamily = "Font Awesome 5 Pro";
constexpr auto BrandsFamily = "Font Awesome 5 Brands";
constexpr int PointSize = 10;

// Set together at the end of a successful registration, and kept until the process ends.
QFont *_fontRegular = nullptr;
QFont *_fontSolid = nullptr;
QFont *_fontLight = nullptr;
QFont *_fontBrands = nullptr;

bool registerFace(const char *file)
{
    return QFontDatabase::addApplicationFont(file) >= 0;
}

void initialize()
{
    if (_fontRegular)
        return;

    if (!registerFace(":/fonts/fa-regular-400.ttf"))
        qWarning("Failed to initialize FontAwesome regular font");
    if (!registerFace(":/fonts/fa-solid-900.ttf"))
        qWarning("Failed to initialize FontAwesome solid font");
    if (!registerFace(":/fonts/fa-light-300.ttf"))
        qWarning("Failed to initialize FontAwesome light font");
    if (!registerFace(":/fonts/fa-brands-400.ttf"))
        return;

    QFontDatabase database;
    auto *regular = new QFont(database.font(ProFamily, "Regular", PointSize));
    _fontSolid = new QFont(database.font(ProFamily, "Solid", PointSize));
    _fontLight = new QFont(database.font(ProFamily, "Light", PointSize));
    _fontBrands = new QFont(database.font(BrandsFamily, "Regular", PointSize));
    _fontRegular = regular;
}

/** A copy of a face; the application's font as long as the faces could not be registered. */
QFont copyOf(QFont *const &face)
{
    initialize();
    return face ? *face : QFont();
}

/** Draws one glyph for each state, at any size. */
class IconEngine : public QIconEngine
{
public:
    IconEngine(QChar on, QChar off, const QColor &colorForOn, const QColor &colorForOff,
               const QFont &face)
        : charOn(on), charOff(off), colorOn(colorForOn), colorOff(colorForOff), font(face)
    {
        // A glyph that the face lacks would be taken from any other font that has the code.
        font.setStyleStrategy(QFont::NoFontMerging);
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const bool isOn = state == QIcon::On;
        painter->save();
        painter->setPen(penColor(isOn ? colorOn : colorOff, mode));
        font.setPixelSize(qMax(1, pixelSize(rect)));
        painter->setFont(font);
        painter->drawText(rect, Qt::AlignCenter, QString(isOn ? charOn : charOff));
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new IconEngine(*this); }

private:
    /** A colour of the icon's own holds in every mode; the palette's is greyed when disabled. */
    static QColor penColor(const QColor &color, QIcon::Mode mode)
    {
        if (color.isValid())
            return color;
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        return QGuiApplication::palette().color(group, QPalette::Text);
    }

    /** Glyphs are up to a quarter wider than high and must stay inside the box. */
    static int pixelSize(const QRect &rect)
    {
        if (rect.height() <= 0)
            return 0;
        const int widthPercent = rect.width() * 100 / rect.height();
        return widthPercent < 125 ? rect.width() * 100 / 125 : rect.height();
    }

    QChar charOn;
    QChar charOff;
    QColor colorOn;
    QColor colorOff;
    QFont font;
};

QIcon makeIcon(QChar on, QChar off, const QColor &colorOn, const QColor &colorOff,
               const QFont &face)
{
    return QIcon(new IconEngine(on, off, colorOn, colorOff, face));
}

} // namespace

QFont font()
{
    return copyOf(_fontRegular);
}

QFont fontSolid()
{
    return copyOf(_fontSolid);
}

QFont fontBrands()
{
    return copyOf(_fontBrands);
}

QFont fontLight()
{
    return copyOf(_fontLight);
}

QIcon icon(QChar ch, const QColor &color)
{
    return makeIcon(ch, ch, color, color, font());
}

QIcon iconSolid(QChar ch, const QColor &color)
{
    return makeIcon(ch, ch, color, color, fontSolid());
}

QIcon iconBrand(QChar ch, const QColor &color)
{
    return makeIcon(ch, ch, color, color, fontBrands());
}

QIcon iconLight(QChar ch, const QColor &color)
{
    return makeIcon(ch, ch, color, color, fontLight());
}

QIcon icon(QChar on, QChar off, const QColor &colorOn, const QColor &colorOff)
{
    return makeIcon(on, off, colorOn, colorOff, font());
}

QIcon iconSolid(QChar on, QChar off, const QColor &colorOn, const QColor &colorOff)
{
    return makeIcon(on, off, colorOn, colorOff, fontSolid());
}

QIcon iconBrand(QChar on, QChar off, const QColor &colorOn, const QColor &colorOff)
{
    return makeIcon(on, off, colorOn, colorOff, fontBrands());
}

QIcon iconLight(QChar on, QChar off, const QColor &colorOn, const QColor &colorOff)
{
    return makeIcon(on, off, colorOn, colorOff, fontLight());
}

} // namespace FontAwesome5
} // namespace Norvu
