// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinkaddress.h>

#include <tellarix/core/strings.h>

#include <QUrl>
#include <QUrlQuery>

#include <cstring>

namespace Tellarix {
namespace IO {

namespace {

struct SecondsOption
{
    const char *name;
    double SeedLinkAddress::*seconds;
    double least;
};

constexpr SecondsOption SecondsOptions[] = {
    {"timeout", &SeedLinkAddress::timeout, 0.1},
    {"keepalive", &SeedLinkAddress::keepAlive, 0},
    {"retry", &SeedLinkAddress::longestPause, 0},
    {"settle", &SeedLinkAddress::settle, 0.1},
};
constexpr double MostSeconds = 86400;

/** Takes an option; the cause if it is unknown or its value has no sense. */
std::string readOption(SeedLinkAddress &address, const std::string &name, const std::string &value)
{
    for (const SecondsOption &option : SecondsOptions) {
        double seconds = 0;
        if (name != option.name)
            continue;
        if (!Core::fromString(seconds, value) || seconds < option.least || seconds > MostSeconds)
            return "the value of \"" + name + "\" is no number of seconds that can be used";
        address.*option.seconds = seconds;
        return {};
    }
    if (name == "state") {
        address.stateFile = value;
        return value.empty() ? "no file is given for \"state\"" : "";
    }
    if (name == "fetch")
        return Core::fromString(address.fetch, value) ? "" : "\"fetch\" is either yes or no";
    if (name == "type") {
        if (value.size() != 1 || !std::strchr("DECOTL", value[0]))
            return "\"type\" is one of D, E, C, O, T and L";
        address.type = value[0];
        return {};
    }
    return "there is no option \"" + name +
           "\" (known: timeout, keepalive, retry, settle, state, fetch, type)";
}

} // namespace

std::string SeedLinkAddress::name() const
{
    const bool isNumber6 = host.find(':') != std::string::npos;
    return (isNumber6 ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

bool parseSeedLinkAddress(const std::string &text, SeedLinkAddress &address, std::string &error)
{
    SeedLinkAddress result;
    const QUrl url(QStringLiteral("seedlink://") + QString::fromStdString(text), QUrl::StrictMode);
    if (!url.userInfo().isEmpty() ||
        text.substr(0, text.find('?')).find('@') != std::string::npos) {
        error = "A SeedLink server knows no users: the address has to begin with the host";
        return false;
    }
    if (!url.isValid() || url.host().isEmpty() || url.port(1) < 1 || url.hasFragment() ||
        (!url.path().isEmpty() && url.path() != "/")) {
        error = "\"" + text.substr(0, text.find('?')) + "\" is not of the form HOST:PORT";
        return false;
    }

    result.host = url.host().toStdString();
    result.port = url.port(result.port);
    for (const auto &[name, value] : QUrlQuery(url).queryItems(QUrl::FullyDecoded)) {
        const std::string cause = readOption(result, name.toStdString(), value.toStdString());
        if (!cause.empty()) {
            error = result.name() + ": " + cause;
            return false;
        }
    }
    address = result;
    return true;
}

} // namespace IO
} // namespace Tellarix
