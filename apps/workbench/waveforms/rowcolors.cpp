// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowcolors.h"

#include "rowdatakeys.h"

#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <QAction>
#include <QEvent>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** Colours that differ in hue and stand out from either background. */
QColor componentColor(const QString &component, bool isDark)
{
    constexpr int Hues[] = {215, 12, 130, 280, 40};
    const int place = QString("ZNE12").indexOf(component);
    if (component.isEmpty() || place < 0)
        return QColor();
    return QColor::fromHsl(Hues[place], 170, isDark ? 175 : 80);
}

} // namespace

RowColors::RowColors(TraceView *view)
    : QObject(view), _view(view), _action(new QAction(tr("A colour per &component"), this))
{
    _action->setCheckable(true);
    _action->setShortcut(tr("Ctrl+Alt+C"));
    connect(_action, SIGNAL(toggled(bool)), this, SLOT(colorRows()));
    view->installEventFilter(this);
}

bool RowColors::eventFilter(QObject *watched, QEvent *event)
{
    // Light colours vanish on a light background, and dark ones on a dark one.
    if (event->type() == QEvent::PaletteChange && _action->isChecked())
        colorRows();
    return QObject::eventFilter(watched, event);
}

void RowColors::adopt(Trace *row) const
{
    if (_action->isChecked())
        color(row);
}

void RowColors::colorRows()
{
    for (Trace *row : _view->items())
        color(row);
}

void RowColors::color(Trace *row) const
{
    const bool isDark = _view->palette().color(QPalette::Base).lightness() < 128;
    const QColor color =
        _action->isChecked() ? componentColor(componentOf(*row), isDark) : QColor();
    if (!color.isValid()) {
        row->recordWidget()->removeRecordPen(0);
        return;
    }
    QPen pen(color, Tellarix::Gui::Scheme::Current().records.lineWidth);
    pen.setCosmetic(true);
    row->recordWidget()->setRecordPen(0, pen);
}

} // namespace Workbench
