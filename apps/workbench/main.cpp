// SPDX-License-Identifier: LGPL-3.0-or-later

#include "workbenchapplication.h"

#include <QtGlobal>

#include <cstring>

namespace {

QtMessageHandler originalHandler = nullptr;

/** Pictures need no display, and no splash either. */
bool wantsPictures(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--snapshot", std::strlen("--snapshot")) == 0)
            return true;
    }
    return false;
}

/** The offscreen platform repeats for each window that it can't resize windows by their hints. */
void dropPlatformNotes(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!message.startsWith("This plugin does not support"))
        originalHandler(type, context, message);
}

} // namespace

int main(int argc, char **argv)
{
    using Workbench::WorkbenchApplication;

    int flags = WorkbenchApplication::OfferRecordStream | WorkbenchApplication::ShowSplash;
    if (wantsPictures(argc, argv)) {
        flags &= ~WorkbenchApplication::ShowSplash;
        originalHandler = qInstallMessageHandler(dropPlatformNotes);
        if (qEnvironmentVariableIsEmpty("DISPLAY") &&
            qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
            qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    WorkbenchApplication application(argc, argv, flags);
    return application();
}
