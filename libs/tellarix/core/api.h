// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QtCore/qglobal.h>

#ifdef TELLARIX_CORE_BUILD
#define TELLARIX_CORE_API Q_DECL_EXPORT
#else
#define TELLARIX_CORE_API Q_DECL_IMPORT
#endif
