// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QObject>

class QAction;

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** A colour for the traces of each component, which can be told apart on the view's background. */
class RowColors : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    explicit RowColors(Norvu::Gui::TraceView *view);

    /** "A colour per component". */
    QAction *action() const { return _action; }
    /** Colours a new row. */
    void adopt(Norvu::Gui::Trace *row) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void colorRows();

private:
    void color(Norvu::Gui::Trace *row) const;

    Norvu::Gui::TraceView *_view;
    QAction *_action;
};

} // namespace Workbench
