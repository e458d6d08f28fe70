// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

class QAction;
class QWidget;

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class TraceRows;
struct ExportOutcome;

/** Menu entries, with their dialogs, by which pictures and data of a trace view are taken away. */
class ExportActions : public QObject
{
    Q_OBJECT

public:
    /** @param rows  tells what is added to rows
     *  @param window  owns this object and is the parent of its dialogs */
    ExportActions(Norvu::Gui::TraceView *view, TraceRows *rows, QWidget *window);

    const QList<QAction *> &actions() const { return _actions; }

public slots:
    void copyPicture();
    void askForPicture();
    void askForMiniSeed();
    void askForSac();

signals:
    /** Something was written or copied; one line of text. */
    void done(const QString &text);
    /** Problems, each of which names what could not be done and why. */
    void failed(const QStringList &problems);

private:
    void addAction(const QString &text, const char *slot, const QString &shortcut = QString());
    bool finishRows();
    QString suggestedName() const;
    bool mayReplace(const QString &folder, const QStringList &names);
    void tell(const ExportOutcome &outcome);

    Norvu::Gui::TraceView *_view;
    TraceRows *_rows;
    QWidget *_window;
    QList<QAction *> _actions;
};

} // namespace Workbench
