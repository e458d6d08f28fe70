// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panel.h"

#include <QPointer>
#include <QTextCodec>
#include <QTimer>

#include <memory>

class QLineEdit;
class QPlainTextEdit;
class QSpinBox;
class QTreeView;

namespace Workbench {

class Job;
class JobModel;
class Jobs;

/** The jobs, what the chosen one printed, and a line to start others. */
class JobPanel : public Panel
{
    Q_OBJECT

public:
    explicit JobPanel(Bench *bench);

    QList<QMenu *> menus() const override;
    void saveState(QSettings &settings) const override;
    void restoreState(QSettings &settings) override;
    QVector<PanelPicture> pictures() override;

private slots:
    void start();
    void cancel();
    void remove();
    void removeEnded();
    void setLevel(int level);
    void follow(Workbench::Job *job);
    void showJob();
    void showOutput();
    void showOutputSoon(Workbench::Job *job);
    void updateActions();

private:
    QWidget *makeCommandLine();
    void createActions();
    Job *currentJob() const;
    void appendOutput(const QByteArray &bytes);

    Jobs *_jobs;
    JobModel *_model;
    QTreeView *_view;
    QPlainTextEdit *_output;
    QTimer _outputTimer;
    QPointer<Job> _shownJob;
    qint64 _shownBytes{0}; /**< of what it printed */
    bool _isEndShown{false};
    std::unique_ptr<QTextDecoder>
        _decoder; /**< keeps the half of a character until the rest comes */
    QLineEdit *_command;
    QSpinBox *_level;
    QMenu *_menu;
    QAction *_cancelAction;
    QAction *_removeAction;
    QAction *_removeEndedAction;
};

} // namespace Workbench
