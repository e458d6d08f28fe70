// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gradientbox.h"

#include "bench/gradientpicture.h"

#include <norvu/gui/gradients.h>

#include <QEvent>
#include <QIcon>
#include <QSignalBlocker>

using Norvu::Gui::Gradients::Registry;
using Tellarix::Gui::Gradient;

namespace Workbench {

namespace {

// Width of a picture in lines of text.
constexpr int PictureWidth = 6;

int separatorIndex()
{
    return Registry.size();
}

int editedIndex()
{
    return separatorIndex() + 1;
}

} // namespace

const QString GradientBox::DefaultName = QStringLiteral("Viridis");

GradientBox::GradientBox(QWidget *parent) : QComboBox(parent)
{
    for (auto it = Registry.constBegin(); it != Registry.constEnd(); ++it)
        addItem(it.key(), it.key());
    // All of them without scrolling, so that the pictures can be compared.
    setMaxVisibleItems(editedIndex() + 1);
    setCurrentIndex(findData(DefaultName));
    drawPictures();
    connect(this, SIGNAL(currentIndexChanged(int)), this, SLOT(tellChoice()));
}

// The choice

QString GradientBox::gradientName() const
{
    return currentData().toString();
}

const Gradient &GradientBox::gradient() const
{
    const Gradient *chosen = Registry.value(gradientName());
    return chosen ? *chosen : _edited;
}

void GradientBox::setGradientName(const QString &name)
{
    if (Registry.contains(name))
        setCurrentIndex(findData(name));
}

void GradientBox::tellChoice()
{
    if (gradientName().isEmpty())
        emit editedChosen();
    else
        emit gradientChosen(gradientName());
}

// The edited gradient

bool GradientBox::hasEdited() const
{
    return count() > separatorIndex();
}

void GradientBox::setEdited(const Gradient &gradient, bool discrete)
{
    const QSignalBlocker quiet(this);
    _edited = gradient;
    if (!hasEdited()) {
        insertSeparator(separatorIndex());
        addItem(tr("Edited"));
    }
    setCurrentIndex(editedIndex());
    setDiscrete(discrete);
    drawPicture(editedIndex(), _edited);
}

void GradientBox::removeEdited()
{
    if (!hasEdited())
        return;

    if (gradientName().isEmpty())
        setGradientName(DefaultName);
    removeItem(editedIndex());
    removeItem(separatorIndex());
    _edited = Gradient();
}

// Pictures

void GradientBox::setDiscrete(bool discrete)
{
    if (discrete == _discrete)
        return;

    _discrete = discrete;
    drawPictures();
}

void GradientBox::drawPictures()
{
    _drawnRatio = devicePixelRatioF();
    setIconSize(QSize(PictureWidth * fontMetrics().height(), fontMetrics().height()));
    for (int i = 0; i < separatorIndex(); ++i)
        drawPicture(i, *Registry.value(itemText(i)));
    if (hasEdited())
        drawPicture(editedIndex(), _edited);
}

void GradientBox::drawPicture(int index, const Gradient &gradient)
{
    const QPixmap picture =
        gradientPicture(gradient, _discrete, iconSize(), _drawnRatio, palette());
    QIcon icon(picture);
    // Below the pointer, the colours must stay what they are.
    icon.addPixmap(picture, QIcon::Selected);
    setItemIcon(index, icon);
}

void GradientBox::changeEvent(QEvent *event)
{
    QComboBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        drawPictures();
}

void GradientBox::showEvent(QShowEvent *event)
{
    if (devicePixelRatioF() != _drawnRatio)
        drawPictures();
    QComboBox::showEvent(event);
}

} // namespace Workbench
