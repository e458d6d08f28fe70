// SPDX-License-Identifier: LGPL-3.0-or-later

#include "workbenchapplication.h"

#include <QtGlobal>

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace {

QtMessageHandler originalHandler = nullptr;

/** Whether any argument begins with one of some texts. */
bool argumentsBeginWith(int argc, char **argv, std::initializer_list<const char *> texts)
{
    for (int i = 1; i < argc; ++i) {
        for (const char *text : texts) {
            if (std::strncmp(argv[i], text, std::strlen(text)) == 0)
                return true;
        }
    }
    return false;
}

/** Pictures need no display, and no splash either. */
bool wantsPictures(int argc, char **argv)
{
    return argumentsBeginWith(argc, argv, {"--snapshot"});
}

bool isWithoutDisplay()
{
    return qEnvironmentVariableIsEmpty("DISPLAY") &&
           qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
           qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
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
        if (isWithoutDisplay())
            qputenv("QT_QPA_PLATFORM", "offscreen");
    } else if (isWithoutDisplay() &&
               argumentsBeginWith(argc, argv,
                                  {"-h", "--help", "-v", "--version", "--list-plugins"})) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    } else if (isWithoutDisplay() && !argumentsBeginWith(argc, argv, {"-platform", "--platform"})) {
        std::fprintf(stderr, "There is no display to open a window on. Set DISPLAY, or write "
                             "pictures by --snapshot DIR, which needs none.\n");
        return 2;
    }
    QCoreApplication::setOrganizationName("norvu");
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    WorkbenchApplication application(argc, argv, flags);
    return application();
}
