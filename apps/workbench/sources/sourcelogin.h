// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "datasource.h"

namespace Workbench {

class SourceList;

// Passwords of sources are kept by HttpAccounts, by host and user.

/** Whether the password of a source's user is known. */
bool hasPassword(const DataSource &source);

/** Keeps what belongs to a source that is put in the stead of @p former; an empty password leaves
 * the one that is known. A password that no source of the list goes by any more is forgotten. */
bool keepPassword(const SourceList &list, const DataSource &former, const DataSource &source,
                  const QString &password, QString *error);

} // namespace Workbench
