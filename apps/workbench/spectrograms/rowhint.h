// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QRect>
#include <QString>

class QPainter;
class QWidget;

namespace Workbench {

/** A line of text in a corner of a row that tells why its picture can't be seen, and may end with a
 *  way out that can be clicked. */
class RowHint
{
public:
    /** What it says from now on; an empty text says nothing. */
    void setText(const QString &text, const QString &action = QString());
    const QString &text() const { return _text; }
    const QString &action() const { return _action; }

    /** Paints the text at the bottom right of @p room, in the colours of @p row. */
    void paint(QPainter &painter, const QRect &room, const QWidget &row);
    /** Whether the action was painted at @p point. */
    bool isActionAt(const QPoint &point) const { return _actionArea.contains(point); }

private:
    QString _text;
    QString _action;
    QRect _actionArea;
};

} // namespace Workbench
