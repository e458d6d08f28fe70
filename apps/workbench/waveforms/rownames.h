// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** Names of rows in a column of their own left of the amplitude axes, as wide as the longest one
 *  needs: for rows without a header line. */
class RowNames : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    explicit RowNames(Norvu::Gui::TraceView *view);

    void setShown(bool show);
    /** The row's label, and what is known beside it. */
    void setName(Norvu::Gui::Trace *row, const QString &name);
    /** Makes the column as wide as what stands in the place of the rows needs it beside the axes;
     *  as the names need it for a negative width. */
    void setForeignWidth(int pixels);

    /** How late its last sample is, beside the name; empty for nothing. A pale name tells that it
     * is too late. */
    void setDelay(Norvu::Gui::Trace *row, const QString &delay, bool isPale);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void updateWidth();

private:
    Norvu::Gui::TraceView *_view;
    QTimer _timer; /**< many rows at once are measured once */
    int _foreignWidth{-1};
    bool _isShown{false};
};

} // namespace Workbench
