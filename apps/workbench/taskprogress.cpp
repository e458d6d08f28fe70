// SPDX-License-Identifier: LGPL-3.0-or-later

#include "taskprogress.h"

#include "bench/task.h"

#include <norvu/gui/fontawesome5.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QStringList>
#include <QToolButton>

namespace Icons = Norvu::FontAwesome5;

namespace Workbench {

namespace {

constexpr int BarWidth = 220;

} // namespace

QString progressForm(const Task &task)
{
    return task.unit().isEmpty()
               ? TaskProgress::tr("%1: %p %").arg(task.name())
               : TaskProgress::tr("%1: %v of %m %2").arg(task.name(), task.unit());
}

TaskProgress::TaskProgress(Tasks *tasks, QWidget *parent)
    : QWidget(parent), _tasks(tasks), _name(new QLabel(this)), _bar(new QProgressBar(this)),
      _cancel(new QToolButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_name);
    layout->addWidget(_bar);
    layout->addWidget(_cancel);
    _bar->setFixedWidth(BarWidth); // room for its text
    _cancel->setIcon(Icons::iconSolid(Icons::chTimes));
    _cancel->setAutoRaise(true);
    hide();

    connect(_cancel, SIGNAL(clicked()), this, SLOT(cancel()));
    connect(_tasks, SIGNAL(started(Workbench::Task *)), this, SLOT(showTasks()));
    connect(_tasks, SIGNAL(progressed(Workbench::Task *)), this, SLOT(showTasks()));
    connect(_tasks, SIGNAL(finished(Workbench::Task *)), this, SLOT(showTasks()));
}

void TaskProgress::showTasks()
{
    setVisible(!_tasks->running().isEmpty());
    if (_tasks->running().isEmpty())
        return;

    const Task &task = *_tasks->running().last();
    const Task::Progress progress = task.progress();
    _name->setText(task.name());
    _name->setVisible(progress.total <= 0);
    _bar->setFormat(progressForm(task));
    _bar->setRange(0, progress.total);
    _bar->setValue(progress.done);
    _cancel->setVisible(task.canBeCanceled());
    _cancel->setEnabled(!task.isCanceled());
    _cancel->setToolTip(tr("Cancel: %1").arg(task.name()));

    QStringList names;
    for (const Task *running : _tasks->running())
        names.prepend(running->name());
    _bar->setToolTip(names.join('\n'));
}

void TaskProgress::cancel()
{
    if (_tasks->running().isEmpty())
        return;
    _tasks->running().last()->cancel();
    showTasks();
}

} // namespace Workbench
