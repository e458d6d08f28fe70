// SPDX-License-Identifier: LGPL-3.0-or-later

#include "outagenotice.h"

#include "livesources.h"
#include "sourcequeue.h"

namespace Workbench {

namespace {

constexpr int MostLines = 3;

} // namespace

OutageNotice::OutageNotice(const LiveSources *live, const SourceQueue *queue, QWidget *parent)
    : QLabel(parent), _live(live), _queue(queue)
{
    setTextFormat(Qt::PlainText);
    // A long reason must not widen the window.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setAlignment(Qt::AlignCenter);
    hide();
    connect(live, SIGNAL(outagesChanged()), this, SLOT(renew()));
    connect(queue, SIGNAL(advanced()), this, SLOT(renew()));
    connect(queue, SIGNAL(ended(QStringList)), this, SLOT(renew()));
}

void OutageNotice::renew()
{
    QStringList lines;
    QStringList outages = _live->outages();
    outages.append(_queue->outage());
    outages.removeAll(QString());
    outages.removeDuplicates();
    for (const QString &outage : outages.mid(0, MostLines))
        lines.append(tr("Waiting for %1").arg(outage));
    if (outages.size() > MostLines)
        lines.append(tr("and for %1 more").arg(outages.size() - MostLines));
    const QString text = lines.join('\n');
    if (text == this->text())
        return;
    setText(text);
    setToolTip(text);
    setVisible(!text.isEmpty());
    emit changed();
}

} // namespace Workbench
