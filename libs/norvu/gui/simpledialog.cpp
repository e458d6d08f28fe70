// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/simpledialog.h>

#include <QPushButton>
#include <QVBoxLayout>

namespace Norvu {
namespace Gui {

SimpleDialog::SimpleDialog(QWidget *content, QWidget *parent, Qt::WindowFlags flags)
    : QDialog(parent, flags)
{
    auto *okButton = new QPushButton(QDialog::tr("OK"));
    auto *cancelButton = new QPushButton(QDialog::tr("Cancel"));
    connect(okButton, SIGNAL(clicked()), this, SLOT(accept()));
    connect(cancelButton, SIGNAL(clicked()), this, SLOT(reject()));

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(okButton);
    buttons->addWidget(cancelButton);

    auto *layout = new QVBoxLayout(this);
    if (content)
        layout->addWidget(content);
    layout->addLayout(buttons);
}

} // namespace Gui
} // namespace Norvu
