// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSemaphore>
#include <QStringList>
#include <QThread>
#include <QWidget>

#include <functional>
#include <memory>
#include <thread>

/**
 * Somebody in front of the screen: presses keys and moves the mouse of the display, and looks at
 * what comes of it.
 *
 * Works in a thread of its own, so that the program under test may wait in a dialog meanwhile; what
 * it looks at, it looks at in the thread of the widgets.
 */
class User
{
public:
    /** Has a user take some steps while events go on.
     *  @return what he has missed, in order */
    static QStringList takes(const std::function<void(User &)> &steps)
    {
        User user;
        bool isDone = false;
        std::thread thread([&] {
            steps(user);
            QMetaObject::invokeMethod(
                qApp, [&] { isDone = true; }, Qt::QueuedConnection);
        });
        while (!isDone)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
        thread.join();
        return user._missed;
    }

    /** Keys by their names of X, e.g. "ctrl+l" or "Next". */
    void press(const QString &keys) { run({"key", "--clearmodifiers", keys}); }
    void type(const QString &text) { run({"type", "--delay", "0", text}); }
    void moveTo(const QWidget *widget, const QPointF &share)
    {
        const QPoint point = placeOf(widget, share);
        run({"mousemove", QString::number(point.x()), QString::number(point.y())});
    }
    void click(const QWidget *widget, const QPointF &share = {0.5, 0.5}, int button = 1)
    {
        moveTo(widget, share);
        run({"click", QString::number(button)});
    }
    /** Presses the left button at one place and lets it go at another. */
    void drag(const QWidget *widget, const QPointF &from, const QPointF &to,
              const QString &modifier = QString())
    {
        moveTo(widget, from);
        hold(modifier, true);
        run({"mousedown", "1"});
        for (double share : {0.3, 0.7, 1.0})
            moveTo(widget, from + share * (to - from));
        run({"mouseup", "1"});
        hold(modifier, false);
    }
    /** Turns the wheel by some steps, upwards if they are positive. */
    void wheel(int steps, const QString &modifier = QString())
    {
        hold(modifier, true);
        run({"click", "--repeat", QString::number(std::abs(steps)), "--delay", "20",
             steps > 0 ? "4" : "5"});
        hold(modifier, false);
    }

    /** What is so in the thread of the widgets, once it has dealt with what came before. */
    template <typename Question>
    static auto ask(const Question &question)
    {
        std::invoke_result_t<Question> answer;
        QMetaObject::invokeMethod(
            qApp, [&] { answer = question(); }, Qt::BlockingQueuedConnection);
        return answer;
    }

    /** Looks until something is so, for some seconds at most; remembers what never was. */
    bool sees(const QString &what, const std::function<bool()> &isSo)
    {
        QElapsedTimer timer;
        timer.start();
        while (!ask(isSo)) {
            if (timer.elapsed() > Patience) {
                _missed.append(what);
                return false;
            }
            QThread::msleep(10);
        }
        return true;
    }

private:
    static constexpr int Patience = 10000;

    void run(const QStringList &arguments)
    {
        QProcess process;
        process.start("xdotool", arguments);
        if (!process.waitForFinished() || process.exitCode() != 0)
            _missed.append("xdotool " + arguments.join(' '));
    }
    void hold(const QString &key, bool down)
    {
        if (!key.isEmpty())
            run({down ? "keydown" : "keyup", key});
    }
    static QPoint placeOf(const QWidget *widget, const QPointF &share)
    {
        return ask([&] {
            return widget->mapToGlobal(
                QPoint(static_cast<int>(share.x() * (widget->width() - 1)),
                       static_cast<int>(share.y() * (widget->height() - 1))));
        });
    }

    QStringList _missed;
};
