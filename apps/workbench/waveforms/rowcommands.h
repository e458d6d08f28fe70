// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QAction;
class QActionGroup;
class QMenu;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class RowVisibility;

/** What can be done with rows: their order, their colours, and hiding, closing and naming the
 *  selected ones. */
class RowCommands : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    RowCommands(Norvu::Gui::TraceView *view, RowVisibility *visibility);
    ~RowCommands() override;

    /** For the menu of a row. */
    QList<QAction *> rowActions() const { return {_copy, _hide, _close}; }
    /** The orders of rows, one of which is in effect. */
    QMenu *orderMenu() const { return _orderMenu; }
    QAction *showAllAction() const { return _showAll; }
    /** "A colour per component". */
    QAction *colorsAction() const { return _colors; }

    /** Notes in which order rows came, and gives them their colour. */
    void adopt(Norvu::Gui::Trace *row);
    /** The order in effect, for settings; unknown ones count for the first. */
    QString order() const;
    void setOrder(const QString &name);

public slots:
    /** Puts rows in the order in effect. */
    void sort();

signals:
    /** Rows were taken away. */
    void closed();

private slots:
    void copyIds();
    void hideSelected();
    void closeSelected();
    void colorRows();

private:
    QAction *addAction(const QString &text, const QString &key, const char *slot);
    QList<Norvu::Gui::Trace *> shownSelection() const;
    void color(Norvu::Gui::Trace *row) const;

    Norvu::Gui::TraceView *_view;
    RowVisibility *_visibility;
    QMenu *_orderMenu;
    QActionGroup *_orders;
    QAction *_copy;
    QAction *_hide;
    QAction *_close;
    QAction *_showAll;
    QAction *_colors;
    int _rowCount{0};
};

} // namespace Workbench
