// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QWidget>

#include <functional>

class QVBoxLayout;

namespace Norvu {
namespace Gui {

class Trace;

/**
 * Rows one below the other.
 *
 * Rows that are shown one by one would each have all of them laid out; here that happens once for
 * any number of them, when the event loop runs or somebody asks for a picture.
 */
class RowStack : public QWidget
{
    Q_OBJECT

public:
    explicit RowStack(QWidget *parent = nullptr);

    /** Takes a row over, and shows it unless it was hidden before. */
    void append(Trace *row);
    /** As append(); a row of the stack goes to its new place. Places beyond the end are the end. */
    void insert(int index, Trace *row);
    /** Leaves a row without a place, as its parent still. */
    void remove(Trace *row);
    /** Gives all rows of the stack the places that they have in @p rows. */
    void setOrder(const QList<Trace *> &rows);
    /** Runs @p change, which may show, hide or alter any number of rows, and lays them out once. */
    void changeTogether(const std::function<void()> &change);

    /** Place of a row, -1 without one. */
    int indexOf(const Trace *row) const;
    /** Rows at the places from @p first to @p last that aren't hidden, from top to bottom. */
    QList<Trace *> rowsBetween(int first, int last) const;
    QList<Trace *> allRows() const;
    /** The row at a position in the stack's coordinates, null beside all of them. */
    Trace *rowAt(const QPoint &position) const;

protected:
    void childEvent(QChildEvent *event) override;

private:
    QVBoxLayout *_layout;
};

} // namespace Gui
} // namespace Norvu
