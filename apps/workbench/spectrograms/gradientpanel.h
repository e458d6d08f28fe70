// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/gradient.h>

#include <QString>
#include <QWidget>

class QBoxLayout;
class QCheckBox;
class QLabel;
class QSettings;
class QVBoxLayout;

namespace Norvu {
namespace Gui {
class GradientEditor;
class GradientWidget;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class GradientBox;

/**
 * Chooses and edits the gradient of a range of amplitudes: its first key is the lowest amplitude,
 * its last key the highest one, whatever numbers these keys are.
 */
class GradientPanel : public QWidget
{
    Q_OBJECT

public:
    explicit GradientPanel(QWidget *parent = nullptr);

    /** May have no stops: then there is nothing to be coloured with. */
    const Tellarix::Gui::Gradient &gradient() const;
    /** Colours in steps instead of mixtures between the stops. */
    bool isDiscrete() const;
    /** Name of a ready-made gradient; empty for an edited one. */
    QString gradientName() const;

    /** Writes the choice and the last edited gradient as the group "gradient". */
    void saveSettings(QSettings &settings) const;
    /** What can't be read falls back to the default gradient, in silence. Emits changed() if this
     *  gives another gradient than before. */
    void restoreSettings(QSettings &settings);

    /** As narrow as it can be made, which is without the check box in the editor's row. */
    QSize minimumSizeHint() const override;

public slots:
    /** Chooses a ready-made gradient; a name that doesn't exist changes nothing. */
    void setGradientName(const QString &name);

signals:
    /** Other colours or keys, or steps instead of mixtures. */
    void changed();

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void takeChoice();
    void takeEdits();

private:
    void prepareEditor();
    void createLayout();
    void connectParts();
    void placeInterpolation(bool inEditor);
    void showChoice();
    void showHint();

    GradientBox *_box;
    Norvu::Gui::GradientEditor *_editor;
    Norvu::Gui::GradientWidget *_bar; /**< the editor's */
    QCheckBox *_interpolation;        /**< the editor's; a row of its own spares width */
    QBoxLayout *_editorRow;           /**< where it was at first */
    QLabel *_hint;
    QVBoxLayout *_layout;
    int _editorWidth{0}; /**< least width of the editor with its check box */
};

} // namespace Workbench
