// SPDX-License-Identifier: LGPL-3.0-or-later

#include "jobpanel.h"

#include "bench/bench.h"
#include "bench/job.h"
#include "bench/jobs.h"
#include "jobmodel.h"

#include <norvu/gui/fontawesome5.h>

#include <QAction>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSettings>
#include <QSpinBox>
#include <QSplitter>
#include <QTextCursor>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>

namespace Workbench {

namespace {

using Norvu::Gui::ProcessGroup;
using namespace Norvu::FontAwesome5;

constexpr auto LevelKey = "jobs/level";
constexpr int MostAtATime = 64;
constexpr int OutputShare = 2;
constexpr int ListShare = 3;
constexpr int OutputMilliseconds = 150;
/** What the output shows at most: a program may print for ever. */
constexpr int MostLines = 2000;
constexpr int MostBytes = 128 << 10;

/** The last @p count bytes of an output, or as much of them as can be shown. */
QByteArray endOf(const QByteArray &output, qint64 count)
{
    const int least = output.size() - static_cast<int>(std::min<qint64>(count, MostBytes));
    int begin = output.size();
    for (int lines = 0; begin > std::max(least, 0); --begin) {
        if (output[begin - 1] == '\n' && ++lines == MostLines)
            break;
    }
    return output.mid(begin);
}

} // namespace

JobPanel::JobPanel(Bench *bench)
    : Panel(bench, {"jobs", tr("Jobs"), tr("&Jobs"), tr("Ctrl+J"), iconSolid(chTasks),
                    PanelPlace::Bottom}),
      _jobs(bench->jobs()), _model(new JobModel(_jobs, this)), _view(new QTreeView(this)),
      _output(new QPlainTextEdit(this)), _command(new QLineEdit(this)), _level(new QSpinBox(this))
{
    _view->setModel(_model);
    _view->setRootIsDecorated(false);
    _view->setUniformRowHeights(true);
    _view->setAlternatingRowColors(true);
    _view->setContextMenuPolicy(Qt::ActionsContextMenu);
    _view->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    _view->header()->setSectionResizeMode(JobModel::Name, QHeaderView::Stretch);
    _view->header()->setStretchLastSection(false);
    _output->setReadOnly(true);
    _output->setMaximumBlockCount(MostLines);
    _output->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    _output->setPlaceholderText(tr("What the chosen job prints"));

    auto *halves = new QSplitter(Qt::Horizontal, this);
    halves->addWidget(_view);
    halves->addWidget(_output);
    halves->setStretchFactor(0, ListShare);
    halves->setStretchFactor(1, OutputShare);
    createActions();
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(halves, 1);
    layout->addWidget(makeCommandLine());

    connect(_view->selectionModel(), SIGNAL(currentChanged(QModelIndex, QModelIndex)), this,
            SLOT(showJob()));
    connect(_jobs, SIGNAL(added(Workbench::Job *)), this, SLOT(follow(Workbench::Job *)));
    connect(_jobs, SIGNAL(changed(Workbench::Job *)), this, SLOT(showJob()));
    connect(_jobs, SIGNAL(removed(Workbench::Job *)), this, SLOT(showJob()));
    connect(_jobs, SIGNAL(outputChanged(Workbench::Job *)), this,
            SLOT(showOutputSoon(Workbench::Job *)));
    _outputTimer.setSingleShot(true);
    _outputTimer.setInterval(OutputMilliseconds);
    connect(&_outputTimer, SIGNAL(timeout()), this, SLOT(showOutput()));
    setFocusProxy(_command);
    updateActions();
}

void JobPanel::createActions()
{
    _cancelAction = new QAction(iconSolid(chBan), tr("&Cancel job"), this);
    _removeAction = new QAction(iconSolid(chTimes), tr("&Remove from list"), this);
    _removeAction->setShortcut(QKeySequence::Delete);
    _removeAction->setShortcutContext(Qt::WidgetShortcut);
    _removeEndedAction = new QAction(iconSolid(chTrash), tr("Remove all that have &ended"), this);
    connect(_cancelAction, SIGNAL(triggered()), this, SLOT(cancel()));
    connect(_removeAction, SIGNAL(triggered()), this, SLOT(remove()));
    connect(_removeEndedAction, SIGNAL(triggered()), this, SLOT(removeEnded()));
    const QList<QAction *> actions{_cancelAction, _removeAction, _removeEndedAction};
    _view->addActions(actions);
    _menu = new QMenu(tr("&Jobs"), this);
    _menu->addActions(actions);
    _menu->addAction(toggleAction());
}

QWidget *JobPanel::makeCommandLine()
{
    auto *line = new QWidget(this);
    auto *layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    _command->setPlaceholderText(tr("Command line of a new job"));
    _command->setClearButtonEnabled(true);
    _level->setRange(1, MostAtATime);
    _level->setValue(_jobs->concurrencyLevel());
    auto *label = new QLabel(tr("At a &time:"), line);
    label->setBuddy(_level);

    auto *startButton = new QToolButton(line);
    startButton->setIcon(iconSolid(chPlay));
    startButton->setText(tr("Start"));
    startButton->setToolTip(tr("Puts the command line at the end of the queue"));
    layout->addWidget(_command, 1);
    layout->addWidget(startButton);
    for (QAction *action : {_cancelAction, _removeAction, _removeEndedAction}) {
        auto *button = new QToolButton(line);
        button->setDefaultAction(action);
        layout->addWidget(button);
    }
    layout->addWidget(label);
    layout->addWidget(_level);

    connect(_command, SIGNAL(returnPressed()), this, SLOT(start()));
    connect(startButton, SIGNAL(clicked()), this, SLOT(start()));
    connect(_level, SIGNAL(valueChanged(int)), this, SLOT(setLevel(int)));
    return line;
}

QList<QMenu *> JobPanel::menus() const
{
    return {_menu};
}

Job *JobPanel::currentJob() const
{
    return _model->job(_view->currentIndex());
}

void JobPanel::start()
{
    if (_jobs->add(QString(), _command->text()))
        _command->clear();
}

void JobPanel::cancel()
{
    if (Job *job = currentJob())
        _jobs->cancel(job);
}

void JobPanel::remove()
{
    if (Job *job = currentJob())
        _jobs->remove(job);
}

void JobPanel::removeEnded()
{
    _jobs->removeEnded();
}

void JobPanel::setLevel(int level)
{
    _jobs->setConcurrencyLevel(level);
}

/** A new job is looked at unless the user looks at another one that still runs. */
void JobPanel::follow(Job *job)
{
    const Job *current = currentJob();
    if (!current || current->status == ProcessGroup::Finished)
        _view->setCurrentIndex(_model->index(_jobs->all().indexOf(job), 0));
    updateActions();
}

void JobPanel::showJob()
{
    showOutput();
    updateActions();
}

void JobPanel::showOutputSoon(Job *job)
{
    if (job == currentJob() && !_outputTimer.isActive())
        _outputTimer.start();
}

/** What has come since the last time, or the end of all if that is less. */
void JobPanel::showOutput()
{
    Job *job = currentJob();
    const bool isNew =
        !job || job != _shownJob || _output->document()->characterCount() > 2 * MostBytes;
    const qint64 fresh = job ? job->printed() - (isNew ? 0 : _shownBytes) : 0;
    const QByteArray bytes = job ? endOf(job->output(), fresh) : QByteArray();
    if (isNew || bytes.size() < fresh) {
        _output->clear();
        _shownJob = job;
        _isEndShown = false;
        _decoder.reset(QTextCodec::codecForLocale()->makeDecoder());
    }
    if (!job)
        return;
    _shownBytes = job->printed();
    appendOutput(bytes);
    if (job->status != ProcessGroup::Finished || _isEndShown)
        return;
    _isEndShown = true;
    if (!job->isCanceled() && job->failed)
        appendOutput(tr("[%1]").arg(job->problem()).toLocal8Bit());
}

/** Scrolls along unless the user has scrolled back. */
void JobPanel::appendOutput(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    QScrollBar *bar = _output->verticalScrollBar();
    const bool isAtEnd = bar->value() == bar->maximum();
    QTextCursor end(_output->document());
    end.movePosition(QTextCursor::End);
    end.insertText(_decoder->toUnicode(bytes));
    if (isAtEnd)
        bar->setValue(bar->maximum());
}

void JobPanel::updateActions()
{
    const Job *job = currentJob();
    _cancelAction->setEnabled(job && job->status != ProcessGroup::Finished && !job->isCanceled());
    _removeAction->setEnabled(job && job->status != ProcessGroup::Running);
    bool anyEnded = false;
    for (const Job *other : _jobs->all())
        anyEnded = anyEnded || other->status == ProcessGroup::Finished;
    _removeEndedAction->setEnabled(anyEnded);
}

void JobPanel::saveState(QSettings &settings) const
{
    settings.setValue(LevelKey, _level->value());
}

void JobPanel::restoreState(QSettings &settings)
{
    _level->setValue(settings.value(LevelKey, _level->value()).toInt());
}

/** Some jobs of each kind, since a start has none. */
QVector<PanelPicture> JobPanel::pictures()
{
    Job *done = _jobs->add(tr("Count the lines of a catalogue"), "sh -c \"seq 5 | wc -l\"");
    Job *failed = _jobs->add(tr("Publish the list"), "sh -c \"echo no route to host; exit 3\"");
    for (const Job *job : {done, failed}) {
        while (job->status != ProcessGroup::Finished && job->state() != QProcess::NotRunning)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    _jobs->add(tr("Locate 2024-05-17"), "sleep 30");
    _jobs->add(tr("Locate 2024-05-18"), "sleep 30");
    _view->setCurrentIndex(_model->index(1, 0));
    const QVector<PanelPicture> pictures = Panel::pictures();
    const QVector<Job *> jobs = _jobs->all();
    for (Job *job : jobs)
        _jobs->cancel(job);
    _jobs->removeEnded();
    return pictures;
}

} // namespace Workbench
