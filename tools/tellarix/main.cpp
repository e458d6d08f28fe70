// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tool.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Tellarix::Tool::Tool tool(argc, argv);
    return tool.exec();
}
