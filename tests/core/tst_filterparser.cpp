#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/chainfilter.h>
#include <tellarix/core/math/filterparser.h>
#include <tellarix/core/math/runningmean.h>
#include <tellarix/core/math/stalta.h>

#include <QtTest>

#include <cmath>
#include <memory>
#include <random>

using namespace Tellarix::Math::Filtering;

Q_DECLARE_METATYPE(std::shared_ptr<InPlaceFilter<double>>)

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
    void reads_data();
    void reads();
    void pointsAtErrors_data();
    void pointsAtErrors();
    void leavesDefinitionAlone();
    void makesFilters_data();
    void makesFilters();
    void tellsNoFilterFromError();
    void describesFilters();
    void readsItsOwnTexts();
    void tellsUnsuitableRates_data();
    void tellsUnsuitableRates();
};

void FilterParserTest::reads_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("positional") << "bandpass(0.7, 2, 6)"
                                << "bandpass(0.7, 2, order=6)";
    QTest::newRow("default") << "lowpass(3)"
                             << "lowpass(3, order=4)";
    QTest::newRow("mixed") << "bandstop(1, upper=2)"
                           << "bandstop(1, 2, order=4)";
    QTest::newRow("named in another order") << "bandpass(order=2, upper=5, lower=1)"
                                            << "bandpass(1, 5, order=2)";
    QTest::newRow("chain") << "demean(60)|bandpass(0.7,2)|stalta(1,60)"
                           << "demean(60) | bandpass(0.7, 2, order=4) | stalta(1, 60)";
    QTest::newRow("blanks") << " \t highpass \n( corner =1 ,order= 3 ) | integrate ( ) "
                            << "highpass(1, order=3) | integrate()";
    QTest::newRow("case") << "BandPass(LOWER=1, Upper=2)"
                          << "bandpass(1, 2, order=4)";
    QTest::newRow("no parentheses") << "integrate | Differentiate"
                                    << "integrate() | differentiate()";
    QTest::newRow("numbers") << "stalta(+.5E+0, 6.e1)"
                             << "stalta(0.5, 60)";
    QTest::newRow("small number") << "lowpass(1e-5, 1e1)"
                                  << "lowpass(1e-05, order=10)";
    QTest::newRow("nothing") << ""
                             << "";
    QTest::newRow("only blanks") << " \t\n"
                                 << "";
    QTest::newRow("self") << "SELF"
                          << "";
    QTest::newRow("self in a chain") << "self() | rmhp(10) | self"
                                     << "rmhp(10)";
}

void FilterParserTest::reads()
{
    QFETCH(QString, text);
    QTEST(canonical(text), "expected");
}

void FilterParserTest::pointsAtErrors_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("part"); // of the message

    const auto row = [](const char *name, const char *text, int column, const char *part) {
        QTest::newRow(name) << text << column << part;
    };
    row("unknown filter", "lowpass(1) | lowpas(2)", 14, "\"lowpas\"; known are lowpass, highpass");
    row("no name", "(1, 2)", 1, "name of a filter instead of \"(\"");
    row("empty stage", "integrate | | integrate", 13, "name of a filter instead of \"|\"");
    row("ends with a bar", "integrate |", 12, "but the text ends");
    row("no bar", "integrate integrate", 11, "\"|\" or the end instead of \"i\"");
    row("not closed", "lowpass(1", 10, "\",\" or \")\", but the text ends");
    row("wrong bracket", "lowpass(1]", 10, "instead of \"]\"");
    row("unit behind number", "lowpass(1 Hz)", 11, "instead of \"H\"");
    row("two points", "lowpass(1.5.2)", 12, "instead of \".\"");
    row("no exponent", "lowpass(1e)", 10, "instead of \"e\"");
    row("hexadecimal", "lowpass(0x10)", 10, "instead of \"x\"");
    row("sign alone", "lowpass(-)", 9, "number for corner instead of \"-\"");
    row("not-a-number", "lowpass(nan)", 9,
        "instead of \"nan\"; allowed is lowpass(corner, order=4)");
    row("too large", "lowpass(1e999)", 9, "corner 1e999 is beyond");
    row("value missing", "bandpass(1,,3)", 12, "number for upper instead of \",\"");
    row("comma at the end", "lowpass(1,)", 11, "number for order instead of \")\"");
    row("none given", "stalta", 7, "\"sta\" is missing; allowed is stalta(sta, lta)");
    row("one missing", "stalta( 1 )", 11, "\"lta\" is missing");
    row("one missing among named", "bandpass(upper=3)", 17, "\"lower\" is missing");
    row("too many", "lowpass(1, 2, 3)", 15, "too many parameters; allowed is lowpass(");
    row("too many for none", "integrate(1)", 11, "allowed is integrate()");
    row("unknown parameter", "lowpass(1, ordr=2)", 12, "unknown parameter \"ordr\"; allowed is");
    row("given twice", "lowpass(1, corner=2)", 12, "corner is given twice");
    row("no value", "lowpass(corner=)", 16, "number for corner");
    row("name alone", "lowpass(corner)", 15, "\"=\" behind \"corner\"");
    row("position behind name", "bandpass(lower=1, 2)", 19, "by name");
    row("corner is 0", "highpass( 0 )", 11, "corner 0 Hz is not above 0");
    row("corner below 0", "lowpass(order=2, corner=-3)", 25, "corner -3 Hz is not above 0");
    row("equal corners", "bandpass(2, 2)", 13,
        "upper corner 2 Hz is not above the lower corner 2 Hz");
    row("reversed, named", "bandstop(upper=1, lower=2)", 16, "upper corner 1 Hz is not above");
    row("order 0", "lowpass(1, 0)", 12, "order 0 is not a whole number from 1 to 20");
    row("order 21", "lowpass(1, order=21)", 18, "order 21 is not a whole number");
    row("half an order", "lowpass(1, 2.5)", 12, "order 2.5");
    row("length below 0", "average(-1)", 9, "length -1 s is not above 0");
    row("windows reversed", "stalta(60, 1)", 12, "lta 1 s is not above the sta 60 s");
    row("behind other letters", "\xC3\xA4", 1, "instead of \"\xC3\xA4\"");
    row("counts letters, not bytes", "integrate \xC3\xA4 lowpass", 11, "instead of \"\xC3\xA4\"");
}

void FilterParserTest::pointsAtErrors()
{
    QFETCH(QString, text);
    QFETCH(QString, part);
    FilterError error;
    QVERIFY(!parseFilter<double>(text.toStdString(), &error));
    QTEST(error.column, "column");
    QVERIFY2(QString::fromStdString(error.message).contains(part), error.message.c_str());
    QVERIFY(filterProblem(text.toStdString(), 100).find(error.message) != std::string::npos);
}

void FilterParserTest::leavesDefinitionAlone()
{
    FilterDefinition definition;
    QVERIFY(parseFilterDefinition("lowpass(2)", definition));
    QVERIFY(!parseFilterDefinition("integrate | lowpass", definition));
    QCOMPARE(definition.toString(), std::string("lowpass(2, order=4)"));
}

void FilterParserTest::makesFilters_data()
{
    using Filter = InPlaceFilter<double>;
    QTest::addColumn<QString>("text");
    QTest::addColumn<std::shared_ptr<Filter>>("filter");

    const auto row = [](const char *text, Filter *filter) {
        QTest::newRow(text) << text << std::shared_ptr<Filter>(filter);
    };
    row("lowpass(3, 2)", new IIR::ButterworthLowpass<double>(2, 3));
    row("highpass(3)", new IIR::ButterworthHighpass<double>(4, 3));
    row("bandpass(1, 5, order=3)", new IIR::ButterworthBandpass<double>(3, 1, 5));
    row("bandstop(1, 5, order=3)", new IIR::ButterworthBandstop<double>(3, 1, 5));
    row("runningmean(0.3)", new RunningMean<double>(0.3));
    row("average(0.3)", new RunningMean<double>(0.3));
    row("demean(0.3)", new RunningMeanHighPass<double>(0.3));
    row("rmhp(0.3)", new RunningMeanHighPass<double>(0.3));
    row("stalta(0.1, 2)", new StaLta<double>(0.1, 2));

    auto *chain = new ChainFilter<double>;
    chain->add(new RunningMeanHighPass<double>(0.5));
    chain->add(new IIR::ButterworthBandpass<double>(4, 2, 8));
    row("demean(0.5) | bandpass(2, 8)", chain);
}

void FilterParserTest::makesFilters()
{
    QFETCH(QString, text);
    QFETCH(std::shared_ptr<InPlaceFilter<double>>, filter);
    const auto parsed = parseFilter<double>(text.toStdString());
    QVERIFY(parsed != nullptr);
    QVERIFY(response(*parsed) == response(*filter));
}

void FilterParserTest::tellsNoFilterFromError()
{
    for (const char *text : {"", " ", "self", "self | self"}) {
        FilterError error{3, "left from before"};
        QVERIFY(!parseFilter<float>(text, &error));
        QCOMPARE(error.column, 0);
        QCOMPARE(error.message, std::string());
        QCOMPARE(filterProblem(text, 0), std::string());
    }
}

void FilterParserTest::describesFilters()
{
    // Each usage is itself a filter once the parameters without a default have values.
    for (const FilterDescription &filter : knownFilters()) {
        std::string text = filter.name + "(";
        for (size_t i = 0; i < filter.parameters.size(); ++i)
            text += (i > 0 ? ", " : "") + filter.parameters[i].name + "=" + std::to_string(i + 1);
        FilterError error;
        const auto made = parseFilter<float>(text + ")", &error);
        QVERIFY2(made != nullptr, (filter.usage() + ": " + error.message).c_str());
        QVERIFY(!filter.description.empty());
        QCOMPARE(knownFilter(QString::fromStdString(filter.name).toUpper().toStdString()), &filter);
    }
    QCOMPARE(knownFilter("bandpass")->usage(), std::string("bandpass(lower, upper, order=4)"));
    QVERIFY(!knownFilter("band"));
}

void FilterParserTest::readsItsOwnTexts()
{
    std::mt19937 random(20240105);
    std::uniform_real_distribution<double> exponent(-12, 12);
    for (int round = 0; round < 500; ++round) {
        FilterDefinition definition;
        const int count = 1 + static_cast<int>(random() % 4);
        for (int i = 0; i < count; ++i) {
            FilterStage stage{&knownFilters()[random() % knownFilters().size()], {}};
            double value = std::pow(10, exponent(random));
            for (const FilterParameter &parameter : stage.filter->parameters)
                stage.values.push_back(parameter.isOrder() ? 1 + random() % 20 : value *= 1.7);
            definition.append(stage);
        }
        FilterDefinition again;
        FilterError error;
        QVERIFY2(parseFilterDefinition(definition.toString(), again, &error),
                 (definition.toString() + ": " + error.message).c_str());
        QCOMPARE(again.toString(), definition.toString());
        for (int i = 0; i < count; ++i)
            QVERIFY(again.stages()[i].values == definition.stages()[i].values);
    }
}

void FilterParserTest::tellsUnsuitableRates_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("problem");

    QTest::newRow("suits") << "bandpass(0.7, 2) | stalta(1, 60)" << 20.0 << "";
    QTest::newRow("lowest corner in use") << "highpass(0.001)" << 200.0 << "";
    QTest::newRow("upper corner") << "bandpass(0.7, 20)" << 20.0
                                  << "bandpass: upper corner 20 Hz is not below the Nyquist "
                                     "frequency 10 Hz";
    QTest::newRow("lower corner") << "bandstop(12, 20)" << 20.0
                                  << "bandstop: lower corner 12 Hz is not below the Nyquist "
                                     "frequency 10 Hz";
    QTest::newRow("corner at Nyquist") << "integrate | lowpass(10)" << 20.0
                                       << "lowpass: corner 10 Hz is not below the Nyquist "
                                          "frequency 10 Hz";
    QTest::newRow("corner too low") << "highpass(1e-18)" << 100.0
                                    << "highpass: corner 1e-18 Hz is too low for a sampling "
                                       "frequency of 100 Hz";
    QTest::newRow("band too narrow")
        << "bandpass(1, 1.000000000000001)" << 100.0
        << "bandpass: the band from 1 Hz to 1.000000000000001 Hz is too "
           "narrow or too low for a sampling frequency of 100 Hz";
    QTest::newRow("window too short")
        << "stalta(0.004, 60)" << 100.0 << "stalta: sta 0.004 s is shorter than a sample at 100 Hz";
    QTest::newRow("window too long") << "average(1e7)" << 100.0
                                     << "average: length 1e+07 s is more than 268435456 samples at "
                                        "100 Hz";
    QTest::newRow("no rate") << "integrate" << 0.0 << "the sampling frequency 0 Hz is not above 0";
    QTest::newRow("wrong text") << "low" << 100.0 << "column 1: unknown filter \"low\"";
}

void FilterParserTest::tellsUnsuitableRates()
{
    QFETCH(QString, text);
    QFETCH(double, rate);
    QFETCH(QString, problem);
    const QString told = QString::fromStdString(filterProblem(text.toStdString(), rate));
    QVERIFY2(problem.isEmpty() ? told.isEmpty() : told.startsWith(problem), qPrintable(told));
}

QTEST_APPLESS_MAIN(FilterParserTest)
#include "tst_filterparser.moc"
