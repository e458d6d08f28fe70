// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class QAction;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class RowAddition;

/** "NET.STA" of a row. */
QString stationOf(const Norvu::Gui::Trace &row);

/** The rows of waveforms, as far as more than one panel has to do with them. */
class TraceRows : public QObject
{
    Q_OBJECT

public:
    explicit TraceRows(QObject *parent = nullptr);
    ~TraceRows() override;

    /** The view of the rows; null unless a panel shows them, which is made before others. */
    Norvu::Gui::TraceView *view() const;
    void setView(Norvu::Gui::TraceView *view);

    /** What is added to each row that comes from now on; null for nothing. It stays the property of
     *  whoever made it, and lives as long as the rows. */
    RowAddition *addition() const;
    void setAddition(RowAddition *addition);

    /** Actions for the menu of a row, which is selected before the menu shows. */
    const QList<QAction *> &menuActions() const { return _menuActions; }
    void addMenuActions(const QList<QAction *> &actions) { _menuActions += actions; }

signals:
    void additionChanged();

private:
    QPointer<Norvu::Gui::TraceView> _view;
    QPointer<RowAddition> _addition;
    QList<QAction *> _menuActions;
};

} // namespace Workbench
