// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QApplication>
#include <QTimer>

#include <functional>

/** Answers the next modal dialog of a kind as soon as it is open. */
template <typename Dialog>
class Answer
{
public:
    explicit Answer(std::function<void(Dialog &)> answer)
    {
        _timer.setInterval(0);
        QObject::connect(&_timer, &QTimer::timeout, [this, answer] {
            auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            _timer.stop();
            given = true;
            answer(*dialog);
        });
        _timer.start();
    }

    bool given{false};

private:
    QTimer _timer;
};
