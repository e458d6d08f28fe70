// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gradientpanel.h"

#include "gradientbox.h"

#include <norvu/gui/gradienteditor.h>
#include <norvu/gui/gradients.h>
#include <norvu/gui/gradientwidget.h>

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSettings>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

using Norvu::Gui::GradientEditor;
using Norvu::Gui::GradientWidget;
using Norvu::Gui::Gradients::Registry;
using Tellarix::Gui::Gradient;

namespace Workbench {

namespace {

constexpr auto SettingsGroup = "gradient";
constexpr auto StopsArray = "stops";
constexpr int MostStops = 1000;
constexpr int Margin = 9;
constexpr int BoxWidth = 360;
// Height of the editor's bar with its handles in lines of text.
constexpr int BarHeight = 3;
constexpr int HintLines = 2;

void writeStops(QSettings &settings, const Gradient &gradient)
{
    settings.beginWriteArray(StopsArray, gradient.size());
    int index = 0;
    for (auto stop = gradient.constBegin(); stop != gradient.constEnd(); ++stop) {
        settings.setArrayIndex(index++);
        settings.setValue("key", stop.key());
        settings.setValue("color", stop->first.name(QColor::HexArgb));
        settings.setValue("tag", stop->second);
    }
    settings.endArray();
}

bool readStop(const QSettings &settings, Gradient &gradient)
{
    bool ok = false;
    const double key = settings.value("key").toDouble(&ok);
    const QString color = settings.value("color").toString();
    if (!ok || !std::isfinite(key) || !QColor::isValidColor(color))
        return false;
    gradient.setColorAt(key, QColor(color), settings.value("tag").toString());
    return true;
}

/** No stops if one of them can't be read. */
Gradient readStops(QSettings &settings)
{
    Gradient gradient;
    const int count = settings.beginReadArray(StopsArray);
    bool ok = count <= MostStops;
    for (int i = 0; ok && i < count; ++i) {
        settings.setArrayIndex(i);
        ok = readStop(settings, gradient);
    }
    settings.endArray();
    return ok ? gradient : Gradient();
}

} // namespace

GradientPanel::GradientPanel(QWidget *parent)
    : QWidget(parent), _box(new GradientBox(this)), _editor(new GradientEditor(this)),
      _bar(_editor->findChild<GradientWidget *>()),
      _interpolation(_editor->findChild<QCheckBox *>("checkInterpolation")),
      _editorRow(_editor->findChild<QBoxLayout *>("hboxLayout")), _hint(new QLabel(this)),
      _layout(new QVBoxLayout(this))
{
    prepareEditor();
    createLayout();
    showChoice();
    connectParts();
}

void GradientPanel::prepareEditor()
{
    _editor->setDiscreteCheckVisible(true);
    _editor->layout()->setContentsMargins(0, 0, 0, 0);
    _editor->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    _editorWidth = _editor->minimumSizeHint().width();

    _bar->setMinimumHeight(BarHeight * fontMetrics().height());
    // The handles are black on dark palettes too.
    _bar->setBackgroundRole(QPalette::Light);
    _bar->setAutoFillBackground(true);
    _bar->setToolTip(tr("Double-click adds a stop, or recolours the one below the pointer.\n"
                        "Drag a handle to move its stop, Ctrl+click removes it."));
}

void GradientPanel::createLayout()
{
    _box->setMaximumWidth(BoxWidth);
    _box->setToolTip(tr("Gradient of the amplitudes"));
    _hint->setWordWrap(true);
    _hint->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    _hint->setMinimumHeight(HintLines * fontMetrics().lineSpacing());

    auto *choice = new QHBoxLayout;
    choice->addWidget(_box, 1);
    choice->addStretch();
    _layout->setContentsMargins(Margin, Margin, Margin, Margin);
    _layout->addLayout(choice);
    _layout->addWidget(_editor);
    _layout->addWidget(_hint);
    _layout->addStretch();
}

void GradientPanel::connectParts()
{
    connect(_box, SIGNAL(gradientChosen(QString)), this, SLOT(takeChoice()));
    connect(_box, SIGNAL(editedChosen()), this, SLOT(takeChoice()));
    connect(_editor, SIGNAL(gradientChanged()), this, SLOT(takeEdits()));
    // The editor is silent about stops that weren't selected, and they are told before they go.
    connect(_bar, SIGNAL(pointRemoved(qreal)), this, SLOT(takeEdits()), Qt::QueuedConnection);
}

const Gradient &GradientPanel::gradient() const
{
    return _box->gradient();
}

bool GradientPanel::isDiscrete() const
{
    return _box->isDiscrete();
}

QString GradientPanel::gradientName() const
{
    return _box->gradientName();
}

void GradientPanel::setGradientName(const QString &name)
{
    _box->setGradientName(name);
}

void GradientPanel::takeChoice()
{
    showChoice();
    emit changed();
}

void GradientPanel::takeEdits()
{
    // The editor also tells what was entered again as it was.
    const bool edited = _editor->gradient() != gradient();
    if (!edited && _editor->discrete() == isDiscrete())
        return;

    if (edited)
        _box->setEdited(_editor->gradient(), _editor->discrete());
    else
        _box->setDiscrete(_editor->discrete());
    showHint();
    emit changed();
}

void GradientPanel::showChoice()
{
    const QSignalBlocker quiet(_editor);
    _editor->setGradient(gradient());
    _editor->setDiscrete(isDiscrete());
    showHint();
}

void GradientPanel::showHint()
{
    if (gradient().isEmpty())
        _hint->setText(tr("A gradient needs at least one stop: double-click the bar."));
    else if (gradient().size() == 1)
        _hint->setText(tr("A single stop gives all amplitudes one colour."));
    else
        _hint->setText(tr("Key %1 is the lowest amplitude, key %2 the highest.")
                           .arg(gradient().firstKey())
                           .arg(gradient().lastKey()));
}

// Layout

QSize GradientPanel::minimumSizeHint() const
{
    const int editor = _editorWidth - _interpolation->sizeHint().width() - _editorRow->spacing();
    return QSize(std::max(_box->minimumSizeHint().width(), editor) + 2 * Margin,
                 layout()->minimumSize().height());
}

void GradientPanel::resizeEvent(QResizeEvent *event)
{
    placeInterpolation(width() >= _editorWidth + 2 * Margin);
    QWidget::resizeEvent(event);
}

void GradientPanel::placeInterpolation(bool inEditor)
{
    if (inEditor == (_editorRow->indexOf(_interpolation) >= 0))
        return;

    if (inEditor) {
        _editorRow->insertWidget(0, _interpolation);
        setTabOrder(_bar, _interpolation);
    } else {
        _layout->insertWidget(1, _interpolation);
        setTabOrder(_box, _interpolation);
        setTabOrder(_interpolation, _bar);
    }
}

// Settings

void GradientPanel::saveSettings(QSettings &settings) const
{
    settings.beginGroup(SettingsGroup);
    settings.remove(QString());
    settings.setValue("name", gradientName());
    settings.setValue("discrete", isDiscrete());
    writeStops(settings, _box->edited());
    settings.endGroup();
}

void GradientPanel::restoreSettings(QSettings &settings)
{
    settings.beginGroup(SettingsGroup);
    const QString name = settings.value("name").toString();
    const bool discrete = settings.value("discrete").toBool();
    const Gradient edited = readStops(settings);
    settings.endGroup();

    const Gradient before = gradient();
    const bool wasDiscrete = isDiscrete();
    const QSignalBlocker quiet(_box);
    _box->removeEdited();
    _box->setDiscrete(discrete);
    if (!edited.isEmpty())
        _box->setEdited(edited, discrete);
    if (!name.isEmpty() || edited.isEmpty())
        _box->setGradientName(Registry.contains(name) ? name : GradientBox::DefaultName);
    showChoice();
    if (gradient() != before || isDiscrete() != wasDiscrete)
        emit changed();
}

} // namespace Workbench
