// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "catalogue.h"

#include <QDialog>

class QComboBox;

namespace Workbench {

/** Asks for the address of an event database: one of those used last, a file, or a typed one. */
class DatabaseDialog : public QDialog
{
    Q_OBJECT

public:
    /** @param recent  addresses used last, the last one first */
    DatabaseDialog(Catalogue::Schema schema, const QStringList &recent, QWidget *parent = nullptr);

    /** What was typed, a plain file name turned into an address. */
    QString url() const;

private slots:
    void browse();

private:
    Catalogue::Schema _schema;
    QComboBox *_address;
};

} // namespace Workbench
