// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

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

/** The order of rows: one of some, and perhaps with those of a station together. */
class RowOrder : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    explicit RowOrder(Norvu::Gui::TraceView *view);
    ~RowOrder() override;

    /** The orders, one of which is in effect, and groupAction(). */
    QMenu *menu() const { return _menu; }
    /** "Group by station": stations stand where the first of their rows would. */
    QAction *groupAction() const { return _group; }

    /** Notes when a row came. */
    void adopt(Norvu::Gui::Trace *row);
    /** The order in effect, for settings; unknown ones count for the first. */
    QString name() const;
    void setName(const QString &name);

public slots:
    /** Puts rows in the order in effect. */
    void sort();

private:
    void addOrder(const QString &name, const QString &text, int number);

    Norvu::Gui::TraceView *_view;
    QMenu *_menu;
    QActionGroup *_orders;
    QAction *_group;
    int _rowCount{0};
};

} // namespace Workbench
