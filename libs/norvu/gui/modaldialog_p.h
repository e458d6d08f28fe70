// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QDialog>
#include <QPointer>

#include <utility>

namespace Norvu {
namespace Gui {

/**
 * A dialog that is shown for one answer. Its parent may be deleted, and the dialog with it, while
 * the user thinks.
 */
template <typename Dialog>
class ModalDialog
{
public:
    template <typename... Arguments>
    explicit ModalDialog(Arguments &&...arguments)
        : _dialog(new Dialog(std::forward<Arguments>(arguments)...))
    {}
    ~ModalDialog() { delete _dialog; }
    ModalDialog(const ModalDialog &) = delete;
    ModalDialog &operator=(const ModalDialog &) = delete;

    Dialog *operator->() const { return _dialog; }

    /** Shows the dialog until it is answered; false if it was cancelled or is gone. */
    bool isAccepted()
    {
        const bool isAnswer = _dialog->exec() == QDialog::Accepted;
        return isAnswer && _dialog;
    }

private:
    QPointer<Dialog> _dialog;
};

} // namespace Gui
} // namespace Norvu
