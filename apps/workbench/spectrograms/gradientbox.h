// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/gradient.h>

#include <QComboBox>
#include <QString>

namespace Workbench {

/**
 * A choice of the ready-made gradients by name and picture. Once a gradient was edited, it can be
 * chosen too, as the last entry.
 */
class GradientBox : public QComboBox
{
    Q_OBJECT

public:
    /** Chosen at first, and where nothing else can be; it can be read by the colour-blind. */
    static const QString DefaultName;

    explicit GradientBox(QWidget *parent = nullptr);

    /** The chosen gradient; valid until another one is chosen or edited. */
    const Tellarix::Gui::Gradient &gradient() const;
    /** The name of the chosen gradient; empty if it is the edited one. */
    QString gradientName() const;

    /** Adds or replaces the edited gradient and chooses it without a signal. */
    void setEdited(const Tellarix::Gui::Gradient &gradient, bool discrete);
    /** Forgets the edited gradient. If it was chosen, the default takes its place. */
    void removeEdited();
    bool hasEdited() const;
    /** The last edited gradient; empty if there is none. */
    const Tellarix::Gui::Gradient &edited() const { return _edited; }

    /** Whether the pictures show steps instead of mixtures of the colours. */
    void setDiscrete(bool discrete);
    bool isDiscrete() const { return _discrete; }

public slots:
    /** Chooses a gradient; a name that doesn't exist changes nothing. */
    void setGradientName(const QString &name);

signals:
    /** Another gradient of the ready-made ones was chosen, by the user or by its name. */
    void gradientChosen(const QString &name);
    /** The user went back to the edited gradient. */
    void editedChosen();

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private slots:
    void tellChoice();

private:
    void drawPictures();
    void drawPicture(int index, const Tellarix::Gui::Gradient &gradient);

    Tellarix::Gui::Gradient _edited;
    bool _discrete{false};
    qreal _drawnRatio{0};
};

} // namespace Workbench
