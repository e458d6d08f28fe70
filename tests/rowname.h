// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QtTest>

#include <tuple>

/** Tells the row of a table that a test has failed in. */
class RowName
{
public:
    explicit RowName(const char *name) : _name(name) {}
    ~RowName()
    {
        if (QTest::currentTestFailed())
            qInfo("in row \"%s\"", _name);
    }

private:
    Q_DISABLE_COPY(RowName)
    const char *_name;
};
