// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tool.h"

#include <tellarix/core/memory.h>

#include <QCoreApplication>

int main(int argc, char **argv)
{
    Tellarix::Core::setUpMemory();
    QCoreApplication application(argc, argv);
    Tellarix::Tool::Tool tool(argc, argv);
    return tool.exec();
}
