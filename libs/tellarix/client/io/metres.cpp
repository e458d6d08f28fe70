// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/metres_p.h>

#include <tellarix/core/strings.h>

#include <QByteArray>
#include <QLocale>

namespace Tellarix {
namespace IO {

namespace {

constexpr int Places = 3;
constexpr double MetresPerKm = 1000;

/** A number in C notation times a power of ten, as text; empty if it has no proper exponent. */
std::string shifted(const std::string &text, int places)
{
    const size_t mark = text.find_first_of("eE");
    int exponent = 0;
    if (mark != std::string::npos && !Core::fromString(exponent, text.substr(mark + 1)))
        return std::string();
    return text.substr(0, mark) + 'e' + std::to_string(exponent + places);
}

} // namespace

bool kmFromMetres(double &km, const std::string &text)
{
    return Core::fromString(km, shifted(Core::trimmed(text), -Places));
}

std::string metresFromKm(double km)
{
    const std::string text =
        QByteArray::number(km * MetresPerKm, 'g', QLocale::FloatingPointShortest).toStdString();
    double back = 0;
    if (kmFromMetres(back, text) && back == km)
        return text;
    return shifted(QByteArray::number(km, 'e', QLocale::FloatingPointShortest).toStdString(),
                   Places);
}

} // namespace IO
} // namespace Tellarix
