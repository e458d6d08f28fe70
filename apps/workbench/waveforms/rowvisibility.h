// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QTimer>
#include <QToolButton>

class QAbstractButton;
class QAction;
class QMenu;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Coverage;
class RowGroups;

/**
 * Which rows of a view are shown: neither those that the user has hidden, nor, unless they are
 * wanted, those without data in the window that is visible, nor those of folded stations.
 *
 * Rows don't jump while the view is being moved with the mouse, but as soon as it is let go. If no
 * row has data, all stay as they are.
 */
class RowVisibility : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    RowVisibility(Norvu::Gui::TraceView *view, const Coverage *coverage, RowGroups *groups);
    ~RowVisibility() override;

    /** "Hide rows without data", on at the start. */
    QAction *hideEmptyAction() const { return _hideEmpty; }
    /** Tells how many rows aren't shown, and shows them when it is clicked; hidden otherwise. To be
     *  put into a layout, which owns it. */
    QAbstractButton *notice() const;
    /** Lists what the user has hidden, to be shown one by one or all. */
    QMenu *hiddenMenu() const { return _hiddenMenu; }

    void hide(const QList<Norvu::Gui::Trace *> &rows);

    /** To be watched for a button that is down while the view is being moved. */
    void watch(QWidget *widget);

    /** Rows that are shown without data too: those that wait for them. */
    void keep(const QSet<const Norvu::Gui::Trace *> &rows);

public slots:
    /** To be called when rows have other data. */
    void update();
    /** Shows also what the user has hidden. */
    void showAll();
    /** Shows what the user has hidden, as far as it has data. */
    void showHidden();

signals:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void updateSoon();
    void fillHiddenMenu();
    void showOne();

private:
    void apply(const QSet<Norvu::Gui::Trace *> &hidden);
    void updateNotice(int emptyCount, int hiddenCount);

    Norvu::Gui::TraceView *_view;
    const Coverage *_coverage;
    RowGroups *_groups;
    QAction *_hideEmpty;
    QAction *_showHidden;
    QMenu *_hiddenMenu;
    QPointer<QToolButton> _notice;
    QTimer _timer;
    QSet<const Norvu::Gui::Trace *> _kept;
    QSet<Norvu::Gui::Trace *> _hidden; /**< by the user; some may be gone */
    QSet<Norvu::Gui::Trace *> _empty;  /**< hidden since they have no data here */
    bool _isDragged{false};
};

} // namespace Workbench
