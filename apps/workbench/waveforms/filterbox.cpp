// SPDX-License-Identifier: LGPL-3.0-or-later

#include "filterbox.h"

#include "bench/historybox.h"

#include <norvu/gui/fontawesome5.h>

#include <tellarix/core/math/filterparser.h>

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

using namespace Tellarix::Math::Filtering;

namespace Workbench {

namespace {

constexpr int InputLength = 36;
constexpr int AdjustedDelay = 1000;
constexpr auto HistoryKey = "Workbench/filters";

const QStringList &presets()
{
    static const QStringList texts{
        "bandpass(0.7, 2, order=4)",    "bandpass(1, 8, order=4)",
        "bandpass(0.02, 0.1, order=3)", "highpass(1, order=3)",
        "lowpass(0.1, order=3)",        "bandpass(0.7, 2, order=4) | stalta(1, 60)",
        "demean(30) | integrate()",
    };
    return texts;
}

/** "frequency in Hz", "whole number from 1 to 20" */
QString kindText(const FilterParameter &parameter)
{
    const QString bounds = FilterBox::tr("from %1 to %2")
                               .arg(QString::fromStdString(numberText(parameter.lowest)),
                                    QString::fromStdString(numberText(parameter.highest)));
    switch (parameter.kind) {
    case FilterParameter::Kind::Corner:
        return FilterBox::tr("frequency in Hz");
    case FilterParameter::Kind::Duration:
        return FilterBox::tr("length in s");
    case FilterParameter::Kind::WholeNumber:
        return FilterBox::tr("whole number %1").arg(bounds);
    case FilterParameter::Kind::Number:
        break;
    }
    const QString unit = QString::fromStdString(parameter.unit);
    return unit.isEmpty() ? FilterBox::tr("number %1").arg(bounds)
                          : FilterBox::tr("in %1, %2").arg(unit, bounds);
}

QString helpRow(const FilterDescription &filter)
{
    QStringList parameters;
    for (const FilterParameter &parameter : filter.parameters)
        parameters << QString::fromStdString(parameter.name) + ": " + kindText(parameter);
    QString text = QString::fromStdString(filter.description);
    if (!parameters.isEmpty())
        text += " (" + parameters.join(", ") + ")";
    return QStringLiteral("<tr><td><b>%1</b>&nbsp;</td><td>%2</td></tr>")
        .arg(QString::fromStdString(filter.usage()).toHtmlEscaped(), text.toHtmlEscaped());
}

} // namespace

QString filterHelp()
{
    QString rows;
    for (const FilterDescriptionCPtr &filter : knownFilters())
        rows += helpRow(*filter);
    return FilterBox::tr("<p>Filters that are joined by | run one behind the other:</p>") +
           "<table>" + rows + "</table>";
}

FilterBox::FilterBox(QWidget *parent)
    : QWidget(parent), _input(new HistoryBox(presets(), HistoryKey, this)),
      _switch(new QToolButton(this)),
      _toggle(new QAction(Norvu::FontAwesome5::iconSolid(Norvu::FontAwesome5::chFilter),
                          tr("&Filter"), this)),
      _edit(new QAction(tr("&Edit filter"), this))
{
    _toggle->setCheckable(true);
    _toggle->setShortcut(tr("F"));
    _toggle->setToolTip(tr("Shows filtered traces (F)"));
    _edit->setShortcut(tr("Ctrl+F"));
    _switch->setDefaultAction(_toggle);
    _switch->setAutoRaise(true);

    _input->setMinimumContentsLength(InputLength);
    _input->setHelp(filterHelp());
    _input->lineEdit()->setPlaceholderText(tr("Filter, e.g. bandpass(0.7, 2, order=4)"));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_switch);
    layout->addWidget(_input);

    _adjusted.setSingleShot(true);
    _adjusted.setInterval(AdjustedDelay);
    connect(&_adjusted, SIGNAL(timeout()), this, SLOT(rememberAdjusted()));
    connect(_input, SIGNAL(editTextChanged(QString)), this, SLOT(noteEdit()));
    connect(_input->lineEdit(), SIGNAL(cursorPositionChanged(int, int)), this, SLOT(noteEdit()));
    connect(_input, SIGNAL(entered(QString)), this, SLOT(enter()));
    connect(_input, SIGNAL(left()), this, SIGNAL(left()));
    connect(_toggle, SIGNAL(toggled(bool)), this, SIGNAL(filterEnabled(bool)));
    connect(_edit, SIGNAL(triggered()), this, SLOT(edit()));
}

void FilterBox::addTool(QAction *action)
{
    auto *button = new QToolButton(this);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    layout()->addWidget(button);
}

QString FilterBox::text() const
{
    return _input->currentText();
}

int FilterBox::cursorPosition() const
{
    return _input->lineEdit()->cursorPosition();
}

bool FilterBox::isFilterEnabled() const
{
    return _toggle->isChecked();
}

void FilterBox::apply(const QString &text)
{
    _input->setEditText(text);
    applyText();
}

void FilterBox::adjust(const QString &text, int cursorPosition)
{
    _isFilling = true;
    _input->setEditText(text);
    _input->lineEdit()->setCursorPosition(cursorPosition);
    _isFilling = false;
    showProblem(0, QString());
    _applied = text.trimmed();
    _adjusted.start();
    emit edited();
    emit filterAdjusted(_applied);
    _toggle->setChecked(true);
}

void FilterBox::rememberAdjusted()
{
    _adjusted.stop();
    _isFilling = true;
    _input->remember(_applied);
    _isFilling = false;
}

/** What comes in several steps counts once. */
void FilterBox::noteEdit()
{
    if (!_isFilling)
        emit edited();
}

/** Typing replaces what is there. */
void FilterBox::edit()
{
    _input->setFocus();
    _input->lineEdit()->selectAll();
}

void FilterBox::enter()
{
    if (applyText())
        emit left();
}

/** @return whether the text is a filter */
bool FilterBox::applyText()
{
    const QString text = _input->currentText().trimmed();
    FilterDefinition definition;
    FilterError error;
    if (!parseFilterDefinition(text.toStdString(), definition, &error)) {
        showProblem(error.column, QString::fromStdString(error.message));
        return false;
    }
    showProblem(0, QString());
    if (text != _applied) {
        _applied = text;
        _adjusted.stop();
        _input->remember(text);
        emit filterChanged(text);
    }
    _toggle->setChecked(!text.isEmpty());
    return true;
}

void FilterBox::showProblem(int column, const QString &message)
{
    _input->showProblem(message, column);
    emit problem(message.isEmpty() ? QString()
                                   : tr("Filter, column %1: %2").arg(column).arg(message));
}

void FilterBox::showMisfits(const QStringList &messages)
{
    // A text that is no filter has more to say.
    if (_input->currentText().trimmed() != _applied)
        return;
    _input->showProblem(messages.join('\n'));
    if (!messages.isEmpty())
        emit problem(tr("Filter: %1").arg(messages.join("; ")));
}

void FilterBox::restoreHistory()
{
    _input->restoreHistory();
}

void FilterBox::saveHistory() const
{
    _input->saveHistory();
}

} // namespace Workbench
