// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QStringList>
#include <QVector>

/** Arguments as main() gets them, which live as long as the application made of them. */
class Arguments
{
public:
    explicit Arguments(const QStringList &arguments = {})
    {
        for (const QString &argument : QStringList("/opt/bin/prog") + arguments)
            _bytes.append(argument.toLocal8Bit());
        for (QByteArray &argument : _bytes)
            _pointers.append(argument.data());
        argc = _pointers.size();
        _pointers.append(nullptr);
    }

    char **argv() { return _pointers.data(); }
    int argc;

private:
    QVector<QByteArray> _bytes;
    QVector<char *> _pointers;
};
