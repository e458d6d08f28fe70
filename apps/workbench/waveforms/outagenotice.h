// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QLabel>

namespace Workbench {

class LiveSources;
class SourceQueue;

/** Names the servers that are waited for, with the reason, a line each; hidden while there are
 *  none. */
class OutageNotice : public QLabel
{
    Q_OBJECT

public:
    OutageNotice(const LiveSources *live, const SourceQueue *queue, QWidget *parent);

signals:
    /** It has another text. */
    void changed();

private slots:
    void renew();

private:
    const LiveSources *_live;
    const SourceQueue *_queue;
};

} // namespace Workbench
