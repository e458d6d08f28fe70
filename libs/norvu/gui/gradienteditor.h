#pragma once

#include <norvu/api.h>

#include "ui_gradienteditor.h"

#include <tellarix/qt/gradient.h>

#include <QColor>
#include <QString>
#include <QStyledItemDelegate>
#include <QWidget>

class QTableWidget;

namespace Norvu {
namespace Gui {

class GradientWidget;

/**
 * Edits a copy of a gradient: its bar with handles, fields for value, colour and tag of the
 * selected stop and a table of all stops. The fields for interpolation and unit are hidden until
 * they are asked for.
 */
class NORVU_GUI_API GradientEditor : public QWidget
{
    Q_OBJECT

public:
    explicit GradientEditor(QWidget *parent = nullptr, Qt::WindowFlags f = Qt::WindowFlags());
    ~GradientEditor() override;

    /** Takes a copy and clears the selection; emits nothing. */
    void setGradient(const Tellarix::Gui::Gradient &gradient);
    const Tellarix::Gui::Gradient &gradient() const { return _gradient; }
    /** Colours in steps instead of mixtures between the stops. */
    void setDiscrete(bool discrete);
    bool discrete() const;
    /** Unit of the keys. */
    void setUnit(const QString &unit);
    QString unit() const;

    void setControlsVisible(bool visible);
    void setDiscreteCheckVisible(bool visible);
    void setUnitEditVisible(bool visible);
    /** Without editing, the table of all stops can still be read. */
    void setEditorEnabled(bool enabled);

    /**
     * Asks for a colour, transparency included.
     * @param ok  may be null; whether the user accepted
     * @return the chosen colour, or @p start
     */
    QColor getColorSelection(const QColor &start, bool *ok);

signals:
    void gradientChanged();
    void gradientDiscrete();

public slots:
    /** Selects the stop at @p key. */
    void pointClicked(qreal key, QColor col);
    /** Asks for the colour of a stop, or of one to be added at @p key (@p hasKey false). */
    void pointDoubleClicked(qreal key, QColor col, bool hasKey);
    /** Clears the selection if this stop was selected; others go without a gradientChanged(). */
    void pointRemoved(qreal key);
    void pointsReleased();
    void setCurrentValid(bool valid);
    void selectColor();
    void selectTag();
    /** Shows the table of all stops. */
    void openList();
    void toggledInterpolation(bool on);
    /** Moves the selected stop to the value of the field. */
    void valueUpdated();
    void unitUpdated();

private:
    void setupTabOrder();
    void connectControls();
    void showColor(const QColor &color);
    void clearFields();
    void fillTable(QTableWidget &table) const;
    void applyTable(const QTableWidget &table);
    bool applyRow(const QTableWidget &table, int row, double selectedKey);

    Tellarix::Gui::Gradient _gradient;
    GradientWidget *_gradientWidget;
    Ui_GradientEditor _ui;
    double _currentKey{-1.0};
    QColor _currentColor;
    bool _currentValid{false};
    bool _editorEnabled{true};
};

/** Draws and edits keys and colours of a table of stops: column 1 is the colour. */
class NORVU_GUI_API GradientTableDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    /** Writes a colour if its dialog was accepted and a key if it is a number. */
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
};

} // namespace Gui
} // namespace Norvu
