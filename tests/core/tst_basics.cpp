// SPDX-License-Identifier: LGPL-3.0-or-later

#include "semaphore.h"

#include <tellarix/core/interfacefactory.h>
#include <tellarix/core/parallel.h>
#include <tellarix/core/strings.h>

#include <QtTest>

#include <atomic>
#include <random>
#include <tuple>
#include <vector>

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

class Shape
{
public:
    virtual ~Shape() = default;
    virtual int corners() const = 0;
};

class Triangle : public Shape
{
public:
    int corners() const override { return 3; }
};

class Square : public Shape
{
public:
    int corners() const override { return 4; }
};

} // namespace

TELLARIX_DEFINE_INTERFACE_POOL(, Shape)

using Pool = Tellarix::Core::Generic::InterfaceFactoryInterface<Shape>;
template <typename T>
using Factory = Tellarix::Core::Generic::InterfaceFactory<Shape, T>;

namespace {

PoolWork work;

} // namespace

class BasicsTest : public QObject
{
    Q_OBJECT

private slots:
    void splits()
    {
        using Tokens = std::vector<std::string>;
        const std::tuple<const char *, bool, Tokens> rows[] = {
            {"GE.APE..BHZ", false, {"GE", "APE", "", "BHZ"}},
            {"GE.APE..BHZ", true, {"GE", "APE", "BHZ"}},
            {".a,", false, {"", "a", ""}},
            {"..,", true, {}},
            {"", false, {""}},
            {"", true, {}}};
        for (const auto &[text, compressEmpty, tokens] : rows)
            QCOMPARE(split(text, ".,", compressEmpty), tokens);
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

    void createsByServiceName()
    {
        Factory<Triangle>("gone with its life");
        const Factory<Triangle> triangle("triangle");
        const Factory<Square> square("square");
        const std::unique_ptr<Shape> made(Pool::Create(std::string("square")));
        QVERIFY(made);
        QCOMPARE(made->corners(), 4);
        QVERIFY(!Pool::Create("Square"));
        QCOMPARE(*Pool::Services(), (Pool::ServiceNames{"triangle", "square"}));
    }

    void firstFactoryOfANameWins()
    {
        QCOMPARE(Pool::ServiceCount(), 0U); // those of the other test have gone
        const Factory<Triangle> first("shape");
        const Factory<Square> second("shape");
        QCOMPARE(static_cast<const Pool *>(Pool::Find("shape")), static_cast<const Pool *>(&first));
        QCOMPARE(Pool::ServiceCount(), 2U);
    }

    void poolCopesWithStrangers()
    {
        Factory<Triangle> nameless(nullptr);
        QVERIFY(!Pool::Find(nullptr));
        QVERIFY(!Pool::Create(nullptr));
        QVERIFY(Pool::Find("") == &nameless);
        QVERIFY(!Pool::RegisterFactory(&nameless));
        QVERIFY(Pool::UnregisterFactory(&nameless));
        QVERIFY(!Pool::UnregisterFactory(&nameless));
    }

    void callsEachNumberOnce()
    {
        // Of numbers and threads, none for as many as there are cores.
        const std::pair<int, int> rows[] = {{-3, 0},    {0, 0},   {1, 0},
                                            {10000, 0}, {100, 1}, {3, 100}};
        for (const auto &[count, threads] : rows) {
            std::vector<std::atomic<int>> calls(static_cast<size_t>(std::max(count, 0)));
            parallelFor(
                count, [&](int number) { ++calls[static_cast<size_t>(number)]; }, threads);
            QVERIFY2(std::all_of(calls.begin(), calls.end(), [](const auto &n) { return n == 1; }),
                     QByteArray::number(count));
        }
    }

    void usesOtherThreads()
    {
        if (QThreadPool::globalInstance()->maxThreadCount() < 2)
            QSKIP("a single core");
        // A thread that came late to the work of another test counts as busy.
        QThreadPool::globalInstance()->waitForDone();
        // Each call waits for the other.
        Semaphore met;
        parallelFor(2, [&](int) {
            met.release();
            QVERIFY(met.tryAcquire(2, 10000));
            met.release(2);
        });
    }

    void waitsForNoBusyThread()
    {
        QThreadPool *pool = QThreadPool::globalInstance();
        Semaphore begun, end;
        for (int i = 0; i < pool->maxThreadCount(); ++i) {
            work.start(pool, [&] {
                begun.release();
                end.acquire();
            });
        }
        begun.acquire(pool->maxThreadCount());
        int sum = 0;
        parallelFor(100, [&](int number) { sum += number; });
        QCOMPARE(sum, 4950);
        end.release(pool->maxThreadCount());
        pool->waitForDone();
    }
};

QTEST_GUILESS_MAIN(BasicsTest)
#include "tst_basics.moc"
