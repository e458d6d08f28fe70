// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "datasource.h"

#include <QDialog>

class QLabel;
class QLineEdit;

namespace Workbench {

class SourceList;

/** Asks for name, addresses and login of a source, and keeps it in a list; the password elsewhere.
 */
class SourceEditor : public QDialog
{
    Q_OBJECT

public:
    /** @param source  what is edited; a new one if it has no name */
    SourceEditor(SourceList *list, const DataSource &source, QWidget *parent = nullptr);

    /** As typed; a login in the addresses is left out. */
    DataSource source() const;

public slots:
    /** Closes once the source could be kept; else the reason is shown. */
    void accept() override;

private:
    QLineEdit *makeLine(const QString &example);
    void fill(DataSource source);
    DataSource typed() const;
    QString password() const;

    SourceList *_list;
    DataSource _former;
    QLineEdit *_name;
    QLineEdit *_live;
    QLineEdit *_past;
    QLineEdit *_stations;
    QLineEdit *_events;
    QLineEdit *_user;
    QLineEdit *_password;
    QLabel *_problem;
};

} // namespace Workbench
