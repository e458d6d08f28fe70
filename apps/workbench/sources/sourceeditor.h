// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "datasource.h"

#include <QDialog>

class QLabel;
class QLineEdit;

namespace Workbench {

class SourceList;

/** Asks for name and addresses of a source, and keeps it in a list. */
class SourceEditor : public QDialog
{
    Q_OBJECT

public:
    /** @param source  what is edited; a new one if it has no name */
    SourceEditor(SourceList *list, const DataSource &source, QWidget *parent = nullptr);

    DataSource source() const;

public slots:
    /** Closes once the source could be kept; else the reason is shown. */
    void accept() override;

private:
    QLineEdit *makeLine(const QString &text, const QString &example);

    SourceList *_list;
    QString _formerName;
    QLineEdit *_name;
    QLineEdit *_live;
    QLineEdit *_past;
    QLineEdit *_stations;
    QLineEdit *_events;
    QLabel *_problem;
};

} // namespace Workbench
