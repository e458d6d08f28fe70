// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QtCore/qglobal.h>

#ifdef NORVU_GUI_BUILD
#define NORVU_GUI_API Q_DECL_EXPORT
#else
#define NORVU_GUI_API Q_DECL_IMPORT
#endif
