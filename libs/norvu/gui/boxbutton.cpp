// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/boxbutton_p.h>

#include <QAbstractSpinBox>
#include <QFontInfo>
#include <QFontMetrics>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace Norvu {
namespace Gui {

namespace {

// For styles that space the items of a layout by their kinds.
constexpr int DefaultSpacing = 6;

int frameMargin(const QWidget &box)
{
    const int spacing = box.style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing);
    return box.style()->pixelMetric(QStyle::PM_DefaultFrameWidth) +
           (spacing < 0 ? DefaultSpacing : spacing);
}

QString buttonStyleSheet(const QString &name, int margin)
{
    return QStringLiteral(
               "QToolButton#%1 { border: none; padding: 0; margin: 0; padding-bottom: 0.5px; "
               "margin-left: %2px; min-height: 0 }"
               "QToolButton#%1::menu-indicator { image: url(:/blank); }")
        .arg(name)
        .arg(margin);
}

} // namespace

BoxButton BoxButton::addTo(QAbstractSpinBox *box, const QString &boxClass, const QString &name,
                           const QFont &face, int gap)
{
    BoxButton result;
    result.margin = frameMargin(*box);
    const int pixelSize = QFontInfo(box->font()).pixelSize() + 2;
    box->setStyleSheet(QStringLiteral("%1 { padding-left: %2px }")
                           .arg(boxClass)
                           .arg(result.margin + pixelSize + gap));

    auto *button = new QToolButton(box);
    button->setObjectName(name);
    // The text cursor of the edit would show over the button otherwise.
    button->setCursor(Qt::ArrowCursor);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setStyleSheet(buttonStyleSheet(name, result.margin));
    QFont font = face;
    font.setPixelSize(pixelSize);
    button->setFont(font);
    result.button = button;

    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    layout->addWidget(button);
    layout->addStretch();
    return result;
}

void BoxButton::setGlyph(QChar glyph)
{
    button->setText(QString(glyph));
    const QRect bounds = QFontMetrics(button->font()).boundingRect(glyph);
    button->setFixedSize(bounds.width() + margin + 1, bounds.height() + 2);
}

} // namespace Gui
} // namespace Norvu
