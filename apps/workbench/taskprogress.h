// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QProgressBar;
class QToolButton;

namespace Workbench {

class Task;
class Tasks;

/** Name and progress of a task in the form of a progress bar, e.g. "Filtering: %v of %m rows". */
QString progressForm(const Task &task);

/** The progress of the task that was started last, with a button that cancels it, for status bars.
 *  Hidden while there is none. */
class TaskProgress : public QWidget
{
    Q_OBJECT

public:
    explicit TaskProgress(Tasks *tasks, QWidget *parent = nullptr);

private slots:
    void showTasks();
    void cancel();

private:
    Tasks *_tasks;
    QLabel *_name; /**< beside a bar that has no total, and so no text */
    QProgressBar *_bar;
    QToolButton *_cancel;
};

} // namespace Workbench
