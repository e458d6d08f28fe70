// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogramproblem.h>

#include <norvu/gui/spectrogramaxis.h>

#include <tellarix/core/math/runningmean.h>
#include <tellarix/core/strings.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace Core = Tellarix::Core;
using Tellarix::Math::Filtering::MeanWindow;

namespace Norvu {
namespace Gui {

namespace {

constexpr const char *Numbers[] = {"lower", "upper", "divisions", "bands"};
constexpr size_t NumberCount = 4;
constexpr size_t FirstWholeNumber = 2;

QString tr(const char *text)
{
    return QCoreApplication::translate("SpectrogramProblem", text);
}

QString quoted(const std::string &text)
{
    return '"' + QString::fromStdString(text) + '"';
}

/** An axis is known if its name can stand in front of right numbers. */
bool isKnownAxis(const std::string &name)
{
    return SpectrogramSettings().fromString(name + "(1,1,1,1)");
}

QString numberProblem(size_t index, const std::string &text)
{
    const QString name = Numbers[index];
    const bool isWhole = index >= FirstWholeNumber;
    double number = 0;
    const bool isNumber = Core::fromString(number, text);
    int whole = 0;
    if (!isNumber || (isWhole && !Core::fromString(whole, text))) {
        constexpr int Most = std::numeric_limits<int>::max();
        if (isWhole && number > Most)
            return tr("%1 %2 is above %3").arg(name, QString::number(number)).arg(Most);
        const QString wanted = isWhole ? tr("a whole number") : tr("a number");
        return Core::trimmed(text).empty()
                   ? tr("expected %1 for %2, but there is nothing").arg(wanted, name)
                   : tr("expected %1 for %2 instead of %3").arg(wanted, name, quoted(text));
    }
    return QString();
}

QString signProblem(size_t index, const std::string &text)
{
    double number = 0;
    Core::fromString(number, text);
    if (number > 0)
        return QString();
    return tr("%1 %2 is not above 0").arg(Numbers[index], Core::trimmed(text).c_str());
}

QString numbersProblem(const std::vector<std::string> &texts)
{
    for (const auto problem : {numberProblem, signProblem}) {
        for (size_t i = 0; i < NumberCount; ++i) {
            const QString message = problem(i, texts[i]);
            if (!message.isEmpty())
                return message;
        }
    }
    return QString();
}

bool holdsSignal(const SpectrogramBands::Corners &band, double nyquist)
{
    return band.low > 0 && band.high < nyquist && band.low < band.high;
}

/** The bands ascend or descend, so that those beyond a frequency lie at one end. */
int silentBands(const SpectrogramAxis &axis, double nyquist)
{
    const bool silentFirst = !holdsSignal(axis.bands().corners(0), nyquist);
    if (silentFirst == !holdsSignal(axis.bands().corners(axis.rows() - 1), nyquist))
        return silentFirst ? axis.rows() : 0;

    int sameAsFirst = 0;
    int other = axis.rows() - 1;
    while (other - sameAsFirst > 1) {
        const int middle = sameAsFirst + (other - sameAsFirst) / 2;
        const bool isSilent = !holdsSignal(axis.bands().corners(middle), nyquist);
        (isSilent == silentFirst ? sameAsFirst : other) = middle;
    }
    return silentFirst ? other : axis.rows() - other;
}

QString silentText(int count, int bands, double nyquist)
{
    if (count == 0)
        return QString();
    const QString limit = tr("%1 Hz, half the sampling frequency").arg(nyquist);
    if (count == bands)
        return tr("all bands reach up to or above %1; they stay at 0").arg(limit);
    const QString form = count == 1 ? tr("%1 of %2 bands reaches up to or above %3; it stays at 0")
                                    : tr("%1 of %2 bands reach up to or above %3; they stay at 0");
    return form.arg(count).arg(bands).arg(limit);
}

} // namespace

QString spectrogramSettingsProblem(const QString &text)
{
    const std::string form = text.toStdString();
    const size_t open = form.find('(');
    if (open == std::string::npos)
        return tr("expected \"(\" behind the name of an axis, as in periods_log(0.1,100,10,64)");

    const std::string name = Core::trimmed(form.substr(0, open));
    if (!isKnownAxis(name)) {
        const QString known = tr("known are periods_log, periods, freqs_log and freqs");
        return name.empty() ? tr("expected the name of an axis in front of \"(\"; %1").arg(known)
                            : tr("unknown axis %1; %2").arg(quoted(name), known);
    }

    const size_t close = form.find(')', open);
    if (close == std::string::npos)
        return tr("expected \")\" behind the numbers, but the text ends");
    const std::string inside = form.substr(open + 1, close - open - 1);
    const auto texts = Core::split(inside, ",", false);
    if (texts.size() != NumberCount) {
        const size_t found = Core::trimmed(inside).empty() ? 0 : texts.size();
        return tr("expected 4 numbers (lower, upper, divisions and bands) instead of %1")
            .arg(found);
    }
    return numbersProblem(texts);
}

QString spectrogramRateProblem(const SpectrogramSettings &settings, double samplingFrequency)
{
    const SpectrogramAxis axis(settings);
    if (axis.isEmpty())
        return QString();
    if (!(samplingFrequency > 0 && std::isfinite(samplingFrequency)))
        return tr("the sampling frequency %1 Hz is not above 0").arg(samplingFrequency);
    if (settings.lower == settings.upper)
        return tr("lower and upper are both %1: the bands have no width and stay at 0")
            .arg(settings.lower);

    const double nyquist = 0.5 * samplingFrequency;
    const int count = silentBands(axis, nyquist);
    if (count < axis.rows() &&
        MeanWindow::samplesIn(axis.bands().highPassSeconds, samplingFrequency) == 1)
        return tr("all bands stay at 0: the running mean that is taken off, over %1 s, holds a "
                  "single sample at %2 Hz")
            .arg(axis.bands().highPassSeconds)
            .arg(samplingFrequency);
    return silentText(count, axis.rows(), nyquist);
}

} // namespace Gui
} // namespace Norvu
