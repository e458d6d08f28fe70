// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowdelays.h"

#include "bench/streamstates.h"
#include "rownames.h"
#include "timetext.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QPainter>
#include <QWidget>

#include <utility>

using namespace Tellarix;
using Norvu::Gui::Trace;

namespace Workbench {

namespace {

constexpr auto LabelName = "delay";

/** A text in the header that changes every second, and must not have rows laid out anew. */
class DelayLabel : public QWidget
{
public:
    DelayLabel() { setObjectName(LabelName); }

    void setText(const QString &text)
    {
        if (text == _text)
            return;
        _text = text;
        update();
    }

    QSize sizeHint() const override
    {
        return {fontMetrics().horizontalAdvance(RowDelays::tr("%1, stale").arg("88 min")),
                fontMetrics().height()};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(foregroundRole()));
        painter.drawText(rect(), Qt::AlignRight | Qt::AlignVCenter, _text);
    }

private:
    QString _text;
};

DelayLabel *labelOf(Trace *row)
{
    if (auto *label = row->findChild<QWidget *>(LabelName))
        return static_cast<DelayLabel *>(label);
    auto *label = new DelayLabel;
    row->addHeaderWidget(label);
    return label;
}

} // namespace

RowDelays::RowDelays(Norvu::Gui::TraceView *view, RowNames *names, const StreamStates *states)
    : QObject(view), _view(view), _names(names), _states(states)
{
    connect(states, SIGNAL(updated()), this, SLOT(update()));
}

void RowDelays::update()
{
    const QList<Trace *> items = _view->items();
    QSet<Trace *> before = std::exchange(_rows, {});
    const Core::Time now = _states->now();
    for (const auto &[id, state] : _states->all()) {
        Trace *row = _view->itemBoundTo(id);
        if (!row)
            continue;
        const bool stale = isStale(state, now);
        const QString delay = delayText(delayOf(state, now));
        const QString told = tr("Last sample %1, came in %2")
                                 .arg(timeText(state.lastSample), timeText(state.lastArrival));
        show(row, delay, stale, told);
        _rows.insert(row);
        before.remove(row);
    }
    for (Trace *row : std::as_const(before)) {
        if (items.contains(row))
            show(row, QString(), false, QString());
    }
}

void RowDelays::show(Trace *row, const QString &delay, bool isStale, const QString &told)
{
    DelayLabel *label = labelOf(row);
    label->setText(isStale ? tr("%1, stale").arg(delay) : delay);
    label->setEnabled(!isStale);
    label->setToolTip(told);
    row->setLabelPale(isStale);
    _names->setDelay(row, delay, isStale);
}

} // namespace Workbench
