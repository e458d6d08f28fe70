// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QNetworkProxy>
#include <QUrl>

namespace Tellarix {
namespace IO {

/**
 * The way to a server: by the variables http_proxy, https_proxy, all_proxy and no_proxy, in upper
 * case too but for the first one, or where none of these is set, as the system has it. Directly to
 * the machine itself.
 *
 * A proxy without a scheme is one of HTTP, and has port 8080 if none is given. no_proxy lists hosts
 * and domains, perhaps with a port; `*` is all of them.
 */
QNetworkProxy systemProxy(const QUrl &url);

/** Whether a proxy for a URL other than of the web is merely one for the web, which may well refuse
 *  to lead anywhere else. */
bool isOfWebOnly(const QUrl &url);

/** "HOST:PORT" of a proxy, for messages. */
QString proxyName(const QNetworkProxy &proxy);

} // namespace IO
} // namespace Tellarix
