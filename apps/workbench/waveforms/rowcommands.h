// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QAction;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class RowVisibility;

/** What can be done with the selected rows: naming, hiding and closing them. */
class RowCommands : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it, and gets its actions */
    RowCommands(Norvu::Gui::TraceView *view, RowVisibility *visibility);

    /** For the menu of a row. */
    QList<QAction *> rowActions() const { return {_copy, _hide, _close}; }

signals:
    /** Rows were taken away. */
    void closed(const QStringList &streams);

private slots:
    void copyIds();
    void hideSelected();
    void closeSelected();

private:
    QAction *addAction(const QString &text, const QString &key, const char *slot);
    QList<Norvu::Gui::Trace *> shownSelection() const;

    Norvu::Gui::TraceView *_view;
    RowVisibility *_visibility;
    QAction *_copy;
    QAction *_hide;
    QAction *_close;
};

} // namespace Workbench
