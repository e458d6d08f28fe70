// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/gradienteditor.h>

#include <norvu/gui/gradienttabledelegate.h>
#include <norvu/gui/gradientwidget.h>
#include <norvu/gui/modaldialog_p.h>

#include <QColorDialog>
#include <QDialog>
#include <QDoubleValidator>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <iterator>

namespace Norvu {
namespace Gui {

namespace {

enum Column
{
    KeyColumn,
    ColorColumn = GradientTableDelegate::ColorColumn,
    TagColumn,
    ColumnCount,
};

// Size of the table's dialog in lines of text.
constexpr int TableWidth = 24;
constexpr int TableHeight = 20;

/** Adds a row with two buttons at the right that end a dialog. */
void addButtons(QDialog &dialog, QVBoxLayout &layout, const QString &accept, const QString &reject)
{
    auto *row = new QHBoxLayout;
    row->addStretch();
    auto *acceptButton = new QPushButton(accept, &dialog);
    auto *rejectButton = new QPushButton(reject, &dialog);
    acceptButton->setDefault(true);
    row->addWidget(acceptButton);
    row->addWidget(rejectButton);
    layout.addLayout(row);
    QObject::connect(acceptButton, SIGNAL(clicked()), &dialog, SLOT(accept()));
    QObject::connect(rejectButton, SIGNAL(clicked()), &dialog, SLOT(reject()));
}

/** Asks for one line of text. */
class ValueDialog : public QDialog
{
public:
    ValueDialog(const QString &label, const QString &value, QWidget *parent)
        : QDialog(parent), _edit(new QLineEdit(value, this))
    {
        auto *layout = new QVBoxLayout(this);
        auto *row = new QHBoxLayout;
        row->addWidget(new QLabel(label + QLatin1Char(':'), this));
        row->addWidget(_edit);
        layout->addLayout(row);
        addButtons(*this, *layout, GradientEditor::tr("Ok"), GradientEditor::tr("Cancel"));
    }

    QString value() const { return _edit->text(); }

private:
    QLineEdit *_edit;
};

QString keyText(double key)
{
    return QString::number(key, 'g', 6);
}

/** The key that a text stands for. The text of @p key means exactly that one: what was not edited
 *  keeps the digits that the text doesn't show. */
double editedKey(const QString &text, double key, bool *ok)
{
    *ok = true;
    return text == keyText(key) ? key : GradientTableDelegate::toKey(text, ok);
}

double keyBefore(const QTableWidget &table, int row)
{
    return table.item(row, KeyColumn)->data(Qt::UserRole).toDouble();
}

double keyAfter(const QTableWidget &table, int row)
{
    const double before = keyBefore(table, row);
    bool ok = false;
    const QString text = table.item(row, KeyColumn)->data(Qt::EditRole).toString();
    const double key = editedKey(text, before, &ok);
    return ok ? key : before;
}

/** Tells which stops the edits of a table replace, a line each; empty if all are kept. */
QString lossesOf(const QTableWidget &table)
{
    QMap<double, double> origins;
    for (int row = 0; row < table.rowCount(); ++row)
        origins.insert(keyBefore(table, row), keyBefore(table, row));

    QStringList losses;
    for (int row = 0; row < table.rowCount(); ++row) {
        const double before = keyBefore(table, row);
        const double after = keyAfter(table, row);
        if (after == before)
            continue;
        const double origin = origins.take(before);
        const auto replaced = origins.constFind(after);
        if (replaced != origins.constEnd())
            losses << GradientEditor::tr(
                          "The stop of %1 will be lost: the one of %2 takes its key.")
                          .arg(keyText(*replaced), keyText(origin));
        origins.insert(after, origin);
    }
    return losses.join(QLatin1Char('\n'));
}

bool isDark(const QColor &color)
{
    return 299 * color.red() + 587 * color.green() + 114 * color.blue() < 125001;
}

} // namespace

GradientEditor::GradientEditor(QWidget *parent, Qt::WindowFlags f)
    : QWidget(parent, f), _gradientWidget(nullptr)
{
    _ui.setupUi(this);

    _gradientWidget = new GradientWidget(&_gradient, _ui.frameGradient);
    auto *layout = new QHBoxLayout(_ui.frameGradient);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_gradientWidget);

    auto *validator = new QDoubleValidator(this);
    // The field is read and written like this too.
    QLocale locale = QLocale::c();
    locale.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
    validator->setLocale(locale);
    _ui.editKey->setValidator(validator);

    setupTabOrder();
    connectControls();
    setDiscreteCheckVisible(false);
    setUnitEditVisible(false);
    setCurrentValid(false);
}

GradientEditor::~GradientEditor()
{
    // A field or button that is telling of its use is not done with itself.
    auto *control = qobject_cast<QWidget *>(sender());
    if (!control || control == _gradientWidget)
        return;
    control->setParent(nullptr);
    control->deleteLater();
}

void GradientEditor::setupTabOrder()
{
    QWidget *const order[] = {_gradientWidget, _ui.checkInterpolation, _ui.editUnit, _ui.editKey,
                              _ui.btnTag,      _ui.btnColor,           _ui.btnList};
    for (size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void GradientEditor::connectControls()
{
    connect(_gradientWidget, SIGNAL(pointClicked(qreal, QColor)), this,
            SLOT(pointClicked(qreal, QColor)));
    connect(_gradientWidget, SIGNAL(pointDoubleClicked(qreal, QColor, bool)), this,
            SLOT(pointDoubleClicked(qreal, QColor, bool)));
    connect(_gradientWidget, SIGNAL(pointRemoved(qreal)), this, SLOT(pointRemoved(qreal)));
    connect(_gradientWidget, SIGNAL(pointsReleased()), this, SLOT(pointsReleased()));
    connect(_gradientWidget, SIGNAL(gradientChanged()), this, SIGNAL(gradientChanged()));

    connect(_ui.checkInterpolation, SIGNAL(toggled(bool)), this, SLOT(toggledInterpolation(bool)));
    connect(_ui.btnColor, SIGNAL(clicked()), this, SLOT(selectColor()));
    connect(_ui.btnTag, SIGNAL(clicked()), this, SLOT(selectTag()));
    connect(_ui.btnList, SIGNAL(clicked()), this, SLOT(openList()));
    connect(_ui.editKey, SIGNAL(editingFinished()), this, SLOT(valueUpdated()));
    connect(_ui.editUnit, SIGNAL(editingFinished()), this, SLOT(unitUpdated()));
}

void GradientEditor::setGradient(const Tellarix::Gui::Gradient &gradient)
{
    _gradient = gradient;
    _gradientWidget->keyChanged(_currentKey, -1.0);
    _currentKey = -1.0;
    _currentColor = QColor();
    setCurrentValid(false);
    clearFields();
    _gradientWidget->update();
}

void GradientEditor::setDiscrete(bool discrete)
{
    _ui.checkInterpolation->setChecked(!discrete);
}

bool GradientEditor::discrete() const
{
    return !_ui.checkInterpolation->isChecked();
}

void GradientEditor::setUnit(const QString &unit)
{
    _ui.editUnit->setText(unit);
}

QString GradientEditor::unit() const
{
    return _ui.editUnit->text();
}

void GradientEditor::setControlsVisible(bool visible)
{
    _ui.frameControls->setVisible(visible);
}

void GradientEditor::setDiscreteCheckVisible(bool visible)
{
    _ui.checkInterpolation->setVisible(visible);
}

void GradientEditor::setUnitEditVisible(bool visible)
{
    _ui.label2->setVisible(visible);
    _ui.editUnit->setVisible(visible);
}

void GradientEditor::setEditorEnabled(bool enabled)
{
    _editorEnabled = enabled;
    QWidget *const widgets[] = {_ui.label, _ui.label2, _ui.checkInterpolation, _ui.frameGradient,
                                _ui.editUnit};
    for (QWidget *widget : widgets)
        widget->setEnabled(enabled);
    setCurrentValid(_currentValid);
}

QColor GradientEditor::getColorSelection(const QColor &start, bool *ok)
{
    if (ok)
        *ok = false;
    // What is passed may go with the editor.
    const QColor before = start;
    ModalDialog<QColorDialog> dialog(this);
    dialog->setOption(QColorDialog::ShowAlphaChannel);
    dialog->setCurrentColor(before);
    if (!dialog.isAccepted())
        return before;
    if (ok)
        *ok = true;
    return dialog->selectedColor();
}

// The selected stop

void GradientEditor::showColor(const QColor &color)
{
    QPalette palette = _ui.btnColor->palette();
    palette.setColor(QPalette::All, QPalette::Button, color);
    palette.setColor(QPalette::All, QPalette::ButtonText, isDark(color) ? Qt::white : Qt::black);
    _ui.btnColor->setPalette(palette);
}

void GradientEditor::clearFields()
{
    _ui.editKey->clear();
    _ui.btnColor->setPalette(palette());
}

void GradientEditor::setCurrentValid(bool valid)
{
    _currentValid = valid;
    const bool editable = _currentValid && _editorEnabled;
    _ui.btnColor->setEnabled(editable);
    _ui.btnTag->setEnabled(editable);
    _ui.editKey->setEnabled(editable);
}

void GradientEditor::pointClicked(qreal key, QColor col)
{
    _ui.editKey->setText(keyText(key));
    showColor(col);
    _currentKey = key;
    _currentColor = col;
    setCurrentValid(true);
}

void GradientEditor::pointDoubleClicked(qreal key, QColor col, bool hasKey)
{
    if (hasKey) {
        pointClicked(key, col);
        selectColor();
        return;
    }

    bool ok = false;
    const QColor color = getColorSelection(col, &ok);
    if (!ok)
        return;
    _gradient.setColorAt(key, color, QString());
    pointClicked(key, color);
    emit gradientChanged();
}

void GradientEditor::pointRemoved(qreal key)
{
    if (!_currentValid || key != _currentKey)
        return;

    pointsReleased();
    _gradientWidget->update();
    emit gradientChanged();
}

void GradientEditor::pointsReleased()
{
    setCurrentValid(false);
    clearFields();
}

void GradientEditor::toggledInterpolation(bool on)
{
    _gradientWidget->setInterpolation(on);
    emit gradientChanged();
}

void GradientEditor::unitUpdated()
{
    emit gradientChanged();
}

void GradientEditor::valueUpdated()
{
    // The field also ends its editing when it is disabled because its stop is gone.
    if (!_currentValid)
        return;

    bool ok = false;
    const double key = editedKey(_ui.editKey->text(), _currentKey, &ok);
    if (!ok) {
        _ui.editKey->setText(keyText(_currentKey));
        ModalDialog<QMessageBox>(QMessageBox::Critical, tr("Error"), tr("Invalid number"),
                                 QMessageBox::Ok, this)
            ->exec();
        return;
    }

    const QString tag = _gradient.value(_currentKey).second;
    _gradient.remove(_currentKey);
    _gradient.setColorAt(key, _currentColor, tag);
    _gradientWidget->keyChanged(_currentKey, key);
    _currentKey = key;
    emit gradientChanged();
}

void GradientEditor::selectColor()
{
    bool ok = false;
    const double key = _currentKey;
    const QColor color = getColorSelection(_currentColor, &ok);
    // The stop may have gone meanwhile.
    if (!ok || key != _currentKey)
        return;

    _currentColor = color;
    _gradient.setColorAt(_currentKey, color, _gradient.value(_currentKey).second);
    showColor(color);
    _gradientWidget->update();
    emit gradientChanged();
}

void GradientEditor::selectTag()
{
    if (!_gradient.contains(_currentKey))
        return;

    const double key = _currentKey;
    ModalDialog<ValueDialog> dialog(tr("Tag"), _gradient.value(key).second, this);
    dialog->setModal(true);
    // The stop may have gone meanwhile.
    if (!dialog.isAccepted() || !_gradient.contains(key))
        return;
    _gradient[key].second = dialog->value();
    emit gradientChanged();
}

// The table of all stops

void GradientEditor::openList()
{
    QDialog dialog;
    dialog.setWindowTitle(tr("Color table"));
    auto *layout = new QVBoxLayout(&dialog);
    auto *table = new QTableWidget(_gradient.size(), ColumnCount, &dialog);
    fillTable(*table);
    layout->addWidget(table);
    auto *warning = new QLabel(&dialog);
    warning->setWordWrap(true);
    warning->hide();
    layout->addWidget(warning);
    connect(table, &QTableWidget::itemChanged, warning, [table, warning] {
        warning->setText(lossesOf(*table));
        warning->setVisible(!warning->text().isEmpty());
    });
    addButtons(dialog, *layout, tr("OK"), tr("Cancel"));
    dialog.resize(TableWidth * fontMetrics().height(), TableHeight * fontMetrics().height());
    const QPointer<GradientEditor> alive(this);
    const bool isAccepted = dialog.exec() == QDialog::Accepted;
    if (alive && isAccepted)
        applyTable(*table);
}

void GradientEditor::fillTable(QTableWidget &table) const
{
    table.setHorizontalHeaderLabels({tr("Key"), tr("Color"), tr("Tag")});
    if (!_editorEnabled)
        table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto *delegate = new GradientTableDelegate(&table);
    table.setItemDelegateForColumn(KeyColumn, delegate);
    table.setItemDelegateForColumn(ColorColumn, delegate);
    table.horizontalHeader()->setStretchLastSection(true);
    table.verticalHeader()->hide();

    int row = 0;
    for (auto stop = _gradient.constBegin(); stop != _gradient.constEnd(); ++stop, ++row) {
        auto *key = new QTableWidgetItem(keyText(stop.key()));
        key->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        key->setData(Qt::UserRole, stop.key());
        table.setItem(row, KeyColumn, key);

        auto *color = new QTableWidgetItem;
        color->setData(Qt::DisplayRole, stop->first);
        color->setData(Qt::UserRole, stop->first);
        table.setItem(row, ColorColumn, color);

        auto *tag = new QTableWidgetItem(stop->second);
        tag->setData(Qt::UserRole, stop->second);
        table.setItem(row, TagColumn, tag);
    }
    table.resizeColumnToContents(KeyColumn);
    table.resizeColumnToContents(ColorColumn);
}

void GradientEditor::applyTable(const QTableWidget &table)
{
    double selectedKey = _currentKey;
    bool isListed = false;
    bool changed = false;
    for (int row = 0; row < table.rowCount(); ++row) {
        changed = applyRow(table, row) || changed;
        if (keyBefore(table, row) != selectedKey)
            continue;
        selectedKey = keyAfter(table, row);
        isListed = true;
    }
    // Rows below the selected one may have changed the order of the handles and this stop's colour.
    if (isListed && _gradient.contains(selectedKey)) {
        _gradientWidget->keyChanged(_currentKey, selectedKey);
        pointClicked(selectedKey, _gradient.value(selectedKey).first);
    }
    if (!changed)
        return;
    _gradientWidget->update();
    emit gradientChanged();
}

bool GradientEditor::applyRow(const QTableWidget &table, int row)
{
    const QTableWidgetItem &colorItem = *table.item(row, ColorColumn);
    const QTableWidgetItem &tagItem = *table.item(row, TagColumn);
    const double oldKey = keyBefore(table, row);
    const double newKey = keyAfter(table, row);
    const auto color = colorItem.data(Qt::DisplayRole).value<QColor>();
    const bool colorChanged = color != colorItem.data(Qt::UserRole).value<QColor>();
    const bool tagChanged = tagItem.text() != tagItem.data(Qt::UserRole).toString();
    if (newKey == oldKey && !colorChanged && !tagChanged)
        return false;
    // The stop may have gone while the table was open.
    if (!_gradient.contains(oldKey))
        return false;

    // One stop, whatever of it was edited: a colour that were looked up at the old key once the
    // stop has left it would make another one there and be lost to this one.
    auto stop = _gradient.take(oldKey);
    if (colorChanged)
        stop.first = color;
    if (tagChanged)
        stop.second = tagItem.text();
    _gradient.setColorAt(newKey, stop.first, stop.second);
    return true;
}

} // namespace Gui
} // namespace Norvu
