// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QObject>
#include <QString>

namespace Norvu {
namespace Gui {

/** The look of a video player, read from the library's resources. */
class NORVU_GUI_API DefaultVideoPlayerStyle : public QObject
{
    Q_OBJECT

public:
    explicit DefaultVideoPlayerStyle(QObject *parent = nullptr);

    /** Empty if the resource is missing. */
    const QString &styleSheet() const { return _styleSheet; }

private:
    QString _styleSheet;
};

} // namespace Gui
} // namespace Norvu
