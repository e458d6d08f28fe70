// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourcelogin.h"

#include "sourcelist.h"

#include <tellarix/client/remote/httpaccounts.h>

#include <QUrl>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

bool haveOneLogin(const DataSource &a, const DataSource &b)
{
    return a.user == b.user && a.loginHost() == b.loginHost();
}

} // namespace

bool hasPassword(const DataSource &source)
{
    QUrl url("https://" + source.loginHost());
    url.setUserName(source.user, QUrl::DecodedMode);
    return !source.user.isEmpty() && !IO::HttpAccounts::Instance().find(url).isEmpty();
}

bool keepPassword(const SourceList &list, const DataSource &former, const DataSource &source,
                  const QString &password, QString *error)
{
    IO::HttpAccounts &accounts = IO::HttpAccounts::Instance();
    if (!source.user.isEmpty() && !password.isEmpty() &&
        !accounts.set({source.loginHost(), source.user, password}, error))
        return false;
    const QVector<DataSource> all = list.all();
    const bool isNeeded = former.user.isEmpty() || haveOneLogin(former, source) ||
                          std::any_of(all.begin(), all.end(), [&](const DataSource &other) {
                              return other.name != former.name && haveOneLogin(former, other);
                          });
    return isNeeded || accounts.remove(former.loginHost(), former.user, error);
}

} // namespace Workbench
