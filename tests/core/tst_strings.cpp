// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/environment.h>
#include <tellarix/core/strings.h>

#include <QtTest>

#include <random>

using namespace Tellarix;
using namespace Tellarix::Core;

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
    void splits()
    {
        using Tokens = std::vector<std::string>;
        const struct
        {
            const char *text;
            bool compressEmpty;
            Tokens tokens;
        } rows[] = {{"GE.APE..BHZ", false, {"GE", "APE", "", "BHZ"}},
                    {"GE.APE..BHZ", true, {"GE", "APE", "BHZ"}},
                    {".a,", false, {"", "a", ""}},
                    {"..,", true, {}},
                    {"", false, {""}},
                    {"", true, {}}};
        for (const auto &row : rows)
            QCOMPARE(split(row.text, ".,", row.compressEmpty), row.tokens);
        QCOMPARE(trimmed(" \t a b\r\n"), std::string("a b"));
        QCOMPARE(trimmed(" \n "), std::string());
    }

    void readsNumbers()
    {
        QVERIFY(reads(" -12 ", -12));
        QVERIFY(reads("+7", 7));
        QVERIFY(reads("2147483647", 2147483647));
        QVERIFY(reads("1e-3", 0.001));
        QVERIFY(reads("\t+2.E2\n", 200.0));
    }

    void rejectsNumbers()
    {
        for (const char *text :
             {"", "+", "+-1", "- 1", "1 2", "12a", "0x10", "1,5", "nan", "1e999"}) {
            int whole = 42;
            double real = 42;
            QVERIFY2(!fromString(whole, text) && whole == 42, text);
            QVERIFY2(!fromString(real, text), text);
        }
        int whole = 42;
        long long large = 42;
        QVERIFY(!fromString(large, "99999999999999999999"));
        QVERIFY(!fromString(whole, "2147483648"));
        QVERIFY(!fromString(whole, "1.0"));
    }

    void readsTruthValues()
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

    void comparesWithoutCase()
    {
        QCOMPARE(compareNoCase("bhz", "BHZ"), 0);
        QVERIFY(compareNoCase("BH", "bhz") < 0);
        QVERIFY(compareNoCase("[", "a") < 0);
    }

    void matchesLikeSlowReference()
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
        QVERIFY(!wildcardMatch("bhz", "BHZ"));
    }

    void takesShareDirectoryFromEnvironment()
    {
        qputenv("TELLARIX_SHARE_DIR", "/opt/tellarix/share/");
        Environment *environment = Environment::Instance();
        environment->refresh();
        QCOMPARE(environment->shareDirectory(), "/opt/tellarix/share");
        qunsetenv("TELLARIX_SHARE_DIR");
        environment->refresh();
    }
};

QTEST_APPLESS_MAIN(StringsTest)
#include "tst_strings.moc"
