#include <tellarix/core/environment.h>
#include <tellarix/core/strings.h>

#include <QDir>
#include <QtTest>

#include <random>

using namespace Tellarix;
using namespace Tellarix::Core;

Q_DECLARE_METATYPE(std::string)
Q_DECLARE_METATYPE(std::vector<std::string>)

namespace {

/** The plain reference: tries every length for each star. */
bool slowMatch(const char *pattern, const char *text)
{
    if (*pattern == '*')
        return slowMatch(pattern + 1, text) || (*text && slowMatch(pattern, text + 1));
    if (*pattern == '\0' || *text == '\0')
        return *pattern == *text;
    return (*pattern == '?' || *pattern == *text) && slowMatch(pattern + 1, text + 1);
}

template <typename T>
bool reads(const std::string &text, T expected)
{
    T value{};
    return fromString(value, text) && value == expected;
}

} // namespace

class StringsTest : public QObject
{
    Q_OBJECT

private slots:
    void trims();
    void splits_data();
    void splits();
    void readsNumbers();
    void rejectsNumbers_data();
    void rejectsNumbers();
    void readsTruthValues();
    void comparesWithoutCase();
    void matchesWildcards_data();
    void matchesWildcards();
    void matchesLikeSlowReference();
    void expandsPaths();
};

void StringsTest::trims()
{
    QCOMPARE(trimmed(" \t a b\r\n"), std::string("a b"));
    QCOMPARE(trimmed(" \n "), std::string());
    std::string text = "  GE ";
    QCOMPARE(&trim(text), &text);
    QCOMPARE(text, std::string("GE"));
}

void StringsTest::splits_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<bool>("compressEmpty");
    QTest::addColumn<std::vector<std::string>>("tokens");

    using Tokens = std::vector<std::string>;
    const auto row = [](const char *name, const char *text, bool compressEmpty, Tokens tokens) {
        QTest::newRow(name) << std::string(text) << compressEmpty << tokens;
    };
    row("empty location", "GE.APE..BHZ", false, {"GE", "APE", "", "BHZ"});
    row("empty location left out", "GE.APE..BHZ", true, {"GE", "APE", "BHZ"});
    row("several separators", "a,b.c", true, {"a", "b", "c"});
    row("separators at both ends", ".a.", false, {"", "a", ""});
    row("separators only, left out", "..,", true, {});
    row("empty", "", false, {""});
    row("empty, left out", "", true, {});
}

void StringsTest::splits()
{
    QFETCH(std::string, text);
    QFETCH(bool, compressEmpty);
    QFETCH(std::vector<std::string>, tokens);
    QCOMPARE(split(text, ".,", compressEmpty), tokens);
}

void StringsTest::readsNumbers()
{
    QVERIFY(reads(" -12 ", -12));
    QVERIFY(reads("+7", 7));
    QVERIFY(reads("2147483647", 2147483647));
    QVERIFY(reads("9223372036854775807", 9223372036854775807LL));
    QVERIFY(reads("1e-3", 0.001));
    QVERIFY(reads(".5", 0.5));
    QVERIFY(reads("\t+2.E2\n", 200.0));
    QVERIFY(reads("0.1", 0.1));
}

void StringsTest::rejectsNumbers_data()
{
    QTest::addColumn<std::string>("text");

    for (const char *text : {"", " ", "+", "-", "+-1", "++1", "- 1", "1 2", "12a", "0x10", "1,5",
                             "nan", "inf", "1e999", "99999999999999999999"})
        QTest::newRow(text) << std::string(text);
}

void StringsTest::rejectsNumbers()
{
    QFETCH(std::string, text);
    int whole = 42;
    long long large = 42;
    double real = 42;
    QVERIFY(!fromString(whole, text));
    QVERIFY(!fromString(large, text));
    QVERIFY(!fromString(real, text) || text == "99999999999999999999");
    QCOMPARE(whole, 42);
    QVERIFY(!fromString(whole, "2147483648"));
    QVERIFY(!fromString(whole, "1.0"));
}

void StringsTest::readsTruthValues()
{
    for (const char *yes : {"true", "Yes", "ON", " 1 "})
        QVERIFY2(reads(yes, true), yes);
    bool value = true;
    for (const char *no : {"False", "no", "off", "0"}) {
        value = true;
        QVERIFY2(fromString(value, no) && !value, no);
    }
    for (const char *neither : {"", "2", "yess", "tru"})
        QVERIFY2(!fromString(value, neither), neither);
}

void StringsTest::comparesWithoutCase()
{
    QCOMPARE(compareNoCase("bhz", "BHZ"), 0);
    QVERIFY(compareNoCase("BH", "bhz") < 0);
    QVERIFY(compareNoCase("BHZ", "bh") > 0);
    QVERIFY(compareNoCase("a", "B") < 0);
    QVERIFY(compareNoCase("[", "a") < 0);
}

void StringsTest::matchesWildcards_data()
{
    QTest::addColumn<std::string>("pattern");
    QTest::addColumn<std::string>("text");
    QTest::addColumn<bool>("matches");

    const auto row = [](const char *name, const char *pattern, const char *text, bool matches) {
        QTest::newRow(name) << std::string(pattern) << std::string(text) << matches;
    };
    row("components", "GE.*..BH?", "GE.APE..BHZ", true);
    row("other component count", "BH?", "BH", false);
    row("star matches nothing", "BHZ*", "BHZ", true);
    row("star alone", "*", "", true);
    row("empty pattern", "", "BHZ", false);
    row("both empty", "", "", true);
    row("star has to give back", "*ab*ab", "aabab", true);
    row("text ends first", "BHZ?", "BHZ", false);
    row("case matters", "bhz", "BHZ", false);
}

void StringsTest::matchesWildcards()
{
    QFETCH(std::string, pattern);
    QFETCH(std::string, text);
    QTEST(wildcardMatch(pattern, text), "matches");
}

void StringsTest::matchesLikeSlowReference()
{
    const unsigned seed = std::random_device{}();
    qInfo("seed %u", seed);
    std::mt19937 generator(seed);
    const auto word = [&](const std::string &letters, unsigned longest) {
        std::string result;
        for (auto length = generator() % (longest + 1); length > 0; --length)
            result += letters[generator() % letters.size()];
        return result;
    };
    int matches = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string pattern = word("ab*?", 6);
        const std::string text = word("ab", 8);
        const bool expected = slowMatch(pattern.c_str(), text.c_str());
        matches += expected;
        QVERIFY2(wildcardMatch(pattern, text) == expected, (pattern + " on " + text).c_str());
    }
    QVERIFY(matches > 100);
}

void StringsTest::expandsPaths()
{
    qputenv("TELLARIX_SHARE_DIR", "/opt/tellarix/share/");
    Environment *environment = Environment::Instance();
    environment->refresh();
    QCOMPARE(environment->shareDir(), "/opt/tellarix/share");
    QCOMPARE(environment->absolutePath("@SHAREDIR@/doc/@SHAREDIR@"),
             std::string("/opt/tellarix/share/doc//opt/tellarix/share"));
    QCOMPARE(environment->absolutePath("~/a~/b"), QDir::homePath().toStdString() + "/a~/b");
    QCOMPARE(environment->absolutePath("/~/b"), std::string("/~/b"));
    qunsetenv("TELLARIX_SHARE_DIR");
    environment->refresh();
}

QTEST_APPLESS_MAIN(StringsTest)
#include "tst_strings.moc"
