// SPDX-License-Identifier: LGPL-3.0-or-later

#include "core/filtertesting.h"

#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/chainfilter.h>
#include <tellarix/core/math/filterparser.h>
#include <tellarix/core/math/runningmean.h>
#include <tellarix/core/math/stalta.h>

#include <QtTest>

#include <cmath>
#include <random>
#include <tuple>
#include <utility>

using namespace Tellarix::Math::Filtering;

namespace {
QString canonical(const QString &text)
{
    FilterDefinition definition;
    FilterError error;
    if (!parseFilterDefinition(text.toStdString(), definition, &error))
        return QString("column %1: %2").arg(error.column).arg(error.message.c_str());
    return QString::fromStdString(definition.toString());
}

/** What a filter makes of an impulse and some noise at 100 Hz. */
std::vector<double> response(InPlaceFilter<double> &filter)
{
    std::minstd_rand random(7);
    std::vector<double> samples(500);
    for (double &sample : samples)
        sample = static_cast<double>(random() % 2000) - 1000;
    samples[0] = 1E5;
    filter.setSamplingFrequency(100);
    filter.apply(static_cast<int>(samples.size()), samples.data());
    return samples;
}

} // namespace

class FilterParserTest : public QObject
{
    Q_OBJECT

private slots:
    void reads()
    {
        const std::pair<const char *, const char *> rows[] = {
            {"bandpass(0.7, 2, 6)", "bandpass(0.7, 2, order=6)"},
            {"bandstop(1, upper=2)", "bandstop(1, 2, order=4)"},
            {"BandPass(order=2, Upper=5, LOWER=1)", "bandpass(1, 5, order=2)"},
            {" \t highpass \n( corner =1 ,order= 3 ) | integrate ( ) ",
             "highpass(1, order=3) | integrate()"},
            {"integrate | Differentiate", "integrate() | differentiate()"},
            {"stalta(+.5E+0, 6.e1)", "stalta(0.5, 60)"},
            {"lowpass(1e-5, 1e1)", "lowpass(1e-05, order=10)"},
            {" \t\n", ""},
            {"none() | demean(10) | NONE", "demean(10)"}};
        for (const auto &[text, expected] : rows)
            QCOMPARE(canonical(text), QString(expected));
    }

    void pointsAtErrors()
    {
        // The column, and a part of the message.
        const std::tuple<const char *, int, const char *> rows[] = {
            {"lowpass(1) | lowpas(2)", 14, "\"lowpas\"; known are lowpass, highpass"},
            {"integrate | | integrate", 13, "name of a filter instead of \"|\""},
            {"integrate integrate", 11, "\"|\" or the end instead of \"i\""},
            {"lowpass(1", 10, "\",\" or \")\", but the text ends"},
            {"lowpass(1e)", 10, "instead of \"e\""},
            {"lowpass(nan)", 9, "instead of \"nan\"; allowed is lowpass(corner, order=4)"},
            {"lowpass(1e999)", 9, "corner 1e999 is beyond"},
            {"stalta( 1 )", 11, "\"lta\" is missing"},
            {"lowpass(1, 2, 3)", 15, "too many parameters; allowed is lowpass("},
            {"lowpass(1, ordr=2)", 12, "unknown parameter \"ordr\"; allowed is"},
            {"lowpass(1, corner=2)", 12, "corner is given twice"},
            {"lowpass(corner)", 15, "\"=\" behind \"corner\""},
            {"bandpass(lower=1, 2)", 19, "by name"},
            {"highpass( 0 )", 11, "corner 0 Hz is not above 0"},
            {"bandstop(upper=1, lower=2)", 16, "upper corner 1 Hz is not above"},
            {"lowpass(1, order=21)", 18, "order 21 is not a whole number from 1 to 20"},
            {"lowpass(1, 2.5)", 12, "order 2.5"},
            {"stalta(60, 1)", 12, "lta 1 s is not above the sta 60 s"},
            {"integrate \xC3\xA4 lowpass", 11, "instead of \"\xC3\xA4\""},
        };
        for (const auto &[text, column, part] : rows) {
            FilterError error;
            QVERIFY2(!parseFilter<double>(text, &error), text);
            QCOMPARE(error.column, column);
            QVERIFY2(error.message.find(part) != std::string::npos, error.message.c_str());
            QVERIFY(filterProblem(text, 100).find(error.message) != std::string::npos);
        }
    }

    void makesFilters()
    {
        const auto compare = [](const char *text, InPlaceFilter<double> &&filter) {
            const auto parsed = parseFilter<double>(text);
            QVERIFY2(parsed && response(*parsed) == response(filter), text);
        };
        compare("highpass(3)", IIR::ButterworthHighpass<double>(4, 3));
        compare("bandpass(1, 5, order=3)", IIR::ButterworthBandpass<double>(3, 1, 5));
        compare("bandstop(1, 5, order=3)", IIR::ButterworthBandstop<double>(3, 1, 5));
        compare("runningmean(0.3)", RunningMean<double>(0.3));
        compare("demean(0.3)", RunningMeanHighPass<double>(0.3));
        compare("stalta(0.1, 2)", StaLta<double>(0.1, 2));

        ChainFilter<double> chain;
        chain.add(new RunningMeanHighPass<double>(0.5));
        chain.add(new IIR::ButterworthBandpass<double>(4, 2, 8));
        compare("demean(0.5) | bandpass(2, 8)", std::move(chain));
    }

    void readsItsOwnTexts()
    {
        const FilterOffer offer(FilterTesting::fading());
        const auto known = knownFilters();
        std::mt19937 random(20240105);
        std::uniform_real_distribution<double> exponent(-12, 12);
        for (int round = 0; round < 500; ++round) {
            FilterDefinition definition;
            const size_t count = 1 + random() % 4;
            for (size_t i = 0; i < count; ++i) {
                const auto filter = known[random() % known.size()];
                definition.append({filter, FilterTesting::someValues(
                                               *filter, random, std::pow(10, exponent(random)))});
            }
            FilterDefinition again;
            FilterError error;
            QVERIFY2(parseFilterDefinition(definition.toString(), again, &error),
                     (definition.toString() + ": " + error.message).c_str());
            QCOMPARE(again.toString(), definition.toString());
            for (size_t i = 0; i < count; ++i)
                QVERIFY(again.stages()[i].values == definition.stages()[i].values);
        }
    }

    void numbersAreReplacedInPlace()
    {
        const FilterOffer offer(FilterTesting::fading());
        const struct
        {
            const char *text;
            size_t stage;
            FilterValues values;
            const char *expected;
        } rows[] = {
            {" BandPass( .70 ,2 )|stalta(1,60) ",
             0,
             {0.812, 2, 4},
             " BandPass( 0.812 ,2 )|stalta(1,60) "},
            {"demean(30) | none | bandpass(order=3, upper = 2e0, lower=+1)",
             1,
             {0.5, 12.5, 3},
             "demean(30) | none | bandpass(order=3, upper = 12.5, lower=0.5)"},
            {"lowpass(1)|lowpass(1)", 1, {1e-6, 4}, "lowpass(1)|lowpass(1e-06)"},
            {"lowpass( 1 ) | integrate", 0, {1, 2}, "lowpass( 1 , order=2) | integrate"},
            {"integrate | fading ", 1, {0.91}, "integrate | fading(factor=0.91) "},
            {"fading()", 0, {0.91}, "fading(factor=0.91)"},
            {"lowpass(1)", 1, {2, 4}, "lowpass(1)"},
            {"lowpass(1)", 0, {2}, "lowpass(1)"},
            {"lowpass(1", 0, {2, 4}, "lowpass(1"},
        };
        for (const auto &row : rows) {
            const std::string text = withFilterValues(row.text, row.stage, row.values);
            QCOMPARE(text, std::string(row.expected));
            const std::vector<FilterPlace> places = filterPlaces(text);
            if (text != row.text)
                QVERIFY(places[row.stage].stage.values == row.values);
            for (const FilterPlace &place : places) {
                const std::string part =
                    text.substr(place.text.begin, place.text.end - place.text.begin);
                QVERIFY2(filterPlaces(part).size() == 1 && part.back() != ' ', part.c_str());
            }
        }
    }

    void knowsWhatIsOffered()
    {
        FilterDefinition kept;
        {
            const FilterOffer offer(FilterTesting::fading());
            FilterDescription other = FilterTesting::fading();
            other.description = "another";
            const FilterOffer second(other);
            QVERIFY(knownFilter("Fading")->description != other.description);
            QVERIFY(parseFilterDefinition("fading | fading(0.9)", kept));
            QCOMPARE(canonical("fading(0.05)"),
                     QString("column 8: factor 0.05 is not a number from 0.9 to 0.99"));
        }
        QVERIFY(canonical("fading").contains("unknown filter"));
        QCOMPARE(response(*kept.create<double>())[1], 9.5E4);

        // One that can't be made must not be shown as if it had filtered.
        FilterDescription unmade = FilterTesting::fading();
        unmade.maker.forDouble = [](const FilterValues &) { return nullptr; };
        const FilterOffer offer(unmade);
        QVERIFY(!parseFilter<double>("integrate | fading"));
        QCOMPARE(filterProblem("fading", 100), std::string("fading: can't be made"));
    }

    void refusesFlawedDescriptions()
    {
        using Parameter = FilterParameter;
        const auto refuses = [](const FilterMaker &maker, const std::string &name,
                                const std::vector<Parameter> &parameters, const char *flaw) {
            QTest::ignoreMessage(
                QtWarningMsg,
                QRegularExpression("Filter .*: .*" + QRegularExpression::escape(flaw)));
            const FilterOffer offer({name, "text", parameters, maker});
            QVERIFY(!knownFilter(name));
        };
        const auto maker = FilterMaker::Of<FilterTesting::Fading, 1>();
        const Parameter corner = Parameter::Corner("corner");
        refuses(maker, "Fading", {corner}, "no name for a filter");
        refuses(maker, "none", {corner}, "no name for a filter");
        refuses({}, "fading", {corner}, "has no maker");
        refuses(maker, "fading", {}, "has 0 parameters, its maker takes 1");
        FilterMaker any = maker;
        any.valueCount = -1;
        refuses(any, "fading", {Parameter::Corner("a b")}, "no name for a parameter");
        refuses(any, "fading", {corner, corner}, "has two parameters");
        refuses(any, "fading", {Parameter::Corner("upper", "lower")}, "no parameter \"lower\"");
        refuses(any, "fading", {Parameter::WholeNumber("n", 1, 5, 2.5)}, "default for n");
        refuses(any, "fading", {Parameter::WholeNumber("n", 1, 5, 2.0), corner},
                "without a default, corner");
    }

    void guideNamesAllFilters()
    {
        QFile guide(NORVU_SOURCE_DIR "/docs/guide.md");
        QVERIFY(guide.open(QIODevice::ReadOnly));
        const QByteArray text = guide.readAll();
        for (const FilterDescriptionCPtr &filter : knownFilters())
            QVERIFY2(text.contains('`' + QByteArray::fromStdString(filter->name) + '`'),
                     filter->name.c_str());
    }

    void tellsUnsuitableRates()
    {
        const std::tuple<const char *, double, const char *> rows[] = {
            {"bandpass(0.7, 2) | stalta(1, 60)", 20, ""},
            {"highpass(0.001)", 200, ""},
            {"bandpass(0.7, 20)", 20,
             "bandpass: upper corner 20 Hz is not below the Nyquist frequency 10 Hz"},
            {"integrate | lowpass(10)", 20,
             "lowpass: corner 10 Hz is not below the Nyquist frequency 10 Hz"},
            {"highpass(1e-18)", 100,
             "highpass: corner 1e-18 Hz is too low for a sampling frequency of 100 Hz"},
            {"stalta(0.004, 60)", 100, "stalta: sta 0.004 s is shorter than a sample at 100 Hz"},
            {"average(1e7)", 100,
             "average: length 1e+07 s is more than 268435456 samples at 100 Hz"},
            {"integrate", 0, "the sampling frequency 0 Hz is not above 0"},
        };
        for (const auto &[text, rate, problem] : rows) {
            const QString told = QString::fromStdString(filterProblem(text, rate));
            QVERIFY2(*problem ? told.startsWith(problem) : told.isEmpty(), qPrintable(told));
        }
    }
};

QTEST_APPLESS_MAIN(FilterParserTest)
#include "tst_filterparser.moc"
