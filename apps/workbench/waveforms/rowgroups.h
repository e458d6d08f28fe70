// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

class QAction;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/**
 * Titles above rows of one station that stand together, by which they can be folded: the first row
 * stays then, and the title tells how many there are.
 */
class RowGroups : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it, and gets its actions */
    explicit RowGroups(Norvu::Gui::TraceView *view);

    /** Folds the stations of the selected rows, or unfolds them if all of them are folded. */
    QAction *foldAction() const { return _fold; }
    /** As foldAction() for all stations. */
    QAction *foldAllAction() const { return _foldAll; }

    /**
     * Puts titles where groups begin.
     * @param rows  of the view that aren't hidden for other reasons, in their order
     * @return those that folding hides
     */
    QSet<Norvu::Gui::Trace *> arrange(const QList<Norvu::Gui::Trace *> &rows);

public slots:
    /** Titles are there only while this is on; what is folded is kept. */
    void setOn(bool on);

signals:
    /** Other rows are folded: arrange() anew. */
    void changed();

private slots:
    void foldSelected();
    void foldAll();
    void foldOne();

private:
    QAction *addAction(const QString &text, const QString &key, const char *slot);
    void toggle(const QSet<QString> &stations);
    QString titleOf(const QList<Norvu::Gui::Trace *> &group) const;
    void putTitle(const QList<Norvu::Gui::Trace *> &group);

    Norvu::Gui::TraceView *_view;
    QAction *_fold;
    QAction *_foldAll;
    QSet<QString> _folded; /**< stations */
    bool _isOn{false};
};

} // namespace Workbench
