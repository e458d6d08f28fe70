// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include "ui_gradienteditor.h"

#include <tellarix/qt/gradient.h>

#include <QColor>
#include <QString>
#include <QWidget>

class QTableWidget;

namespace Norvu {
namespace Gui {

class GradientWidget;

/**
 * Edits a copy of a gradient: its bar with handles, fields for value, colour and tag of the
 * selected stop and a table of all stops. The fields for interpolation and unit are hidden until
 * they are asked for.
 *
 * Keys are in the unit of the gradient and shown with six digits; what was not edited keeps all of
 * its digits. Numbers are typed in the C locale; what is none gets a message and changes nothing.
 */
class NORVU_GUI_API GradientEditor : public QWidget
{
    Q_OBJECT

public:
    explicit GradientEditor(QWidget *parent = nullptr, Qt::WindowFlags f = Qt::WindowFlags());
    ~GradientEditor() override;

    /** Takes a copy and clears the selection; emits nothing. */
    void setGradient(const Tellarix::Gui::Gradient &gradient);
    /** The edited copy; valid while the editor lives. */
    const Tellarix::Gui::Gradient &gradient() const { return _gradient; }
    /** Colours in steps instead of mixtures between the stops; a change emits gradientChanged(). */
    void setDiscrete(bool discrete);
    bool discrete() const;
    /** Unit of the keys, a text for the user. */
    void setUnit(const QString &unit);
    QString unit() const;

    /** Shows or hides all below the bar. */
    void setControlsVisible(bool visible);
    void setDiscreteCheckVisible(bool visible);
    void setUnitEditVisible(bool visible);
    /** Without editing, the table of all stops can still be read. */
    void setEditorEnabled(bool enabled);

    /**
     * Asks for a colour, transparency included, in a modal dialog.
     * @param ok  may be null; whether the user accepted
     * @return the chosen colour, or @p start if the user cancelled
     */
    QColor getColorSelection(const QColor &start, bool *ok);

signals:
    /** The stops, the steps or the unit changed. When the selected stop is removed from the bar,
     *  gradient() still holds it in this moment; the removal of another one is not told. */
    void gradientChanged();
    /** Reserved: the editor doesn't emit it; see discrete() on gradientChanged(). */
    void gradientDiscrete();

public slots:
    /** Selects the stop at @p key, which has the colour @p col. */
    void pointClicked(qreal key, QColor col);
    /** Asks for the colour of a stop, or of one to be added at @p key (@p hasKey false). */
    void pointDoubleClicked(qreal key, QColor col, bool hasKey);
    /** Clears the selection if this stop was selected; others go without a gradientChanged(). */
    void pointRemoved(qreal key);
    /** Clears the selection. */
    void pointsReleased();
    /** Says whether a stop is selected: enables its fields, unless editing is disabled. */
    void setCurrentValid(bool valid);
    /** Asks for the colour of the selected stop. */
    void selectColor();
    /** Asks for the tag of the selected stop; does nothing if it is gone. */
    void selectTag();
    /**
     * Shows the table of all stops in a modal dialog. What was edited is applied row by row from
     * the top: a key that belongs to another stop replaces that one, of which the dialog warns.
     */
    void openList();
    void toggledInterpolation(bool on);
    /** Moves the selected stop to the value of the field; one that is there is replaced. */
    void valueUpdated();
    /** Tells a change of the unit. */
    void unitUpdated();

private:
    void setupTabOrder();
    void connectControls();
    void showColor(const QColor &color);
    void clearFields();
    void fillTable(QTableWidget &table) const;
    void applyTable(const QTableWidget &table);
    bool applyRow(const QTableWidget &table, int row);

    Tellarix::Gui::Gradient _gradient;
    GradientWidget *_gradientWidget;
    Ui_GradientEditor _ui;
    double _currentKey{-1.0};
    QColor _currentColor;
    bool _currentValid{false};
    bool _editorEnabled{true};
};

} // namespace Gui
} // namespace Norvu
