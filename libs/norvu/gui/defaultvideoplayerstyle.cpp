// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/defaultvideoplayerstyle.h>

#include <QFile>

namespace Norvu {
namespace Gui {

DefaultVideoPlayerStyle::DefaultVideoPlayerStyle(QObject *parent) : QObject(parent)
{
    QFile file(QStringLiteral(":/norvu/gui/controls/videoplayer/defaultstyle.qss"));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    if (!bytes.isNull())
        _styleSheet = QString::fromUtf8(bytes.constData());
}

} // namespace Gui
} // namespace Norvu
