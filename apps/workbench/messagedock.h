// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QDockWidget>

class QPlainTextEdit;

namespace Workbench {

/** The list of problems; it comes up when there are new ones. */
class MessageDock : public QDockWidget
{
    Q_OBJECT

public:
    explicit MessageDock(QWidget *parent = nullptr);

    void add(const QStringList &problems);
    void clear();

private:
    QPlainTextEdit *_list;
};

} // namespace Workbench
