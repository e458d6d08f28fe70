// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/interfacefactory.h>

#include <QtTest>

namespace {
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

class InterfaceFactoryTest : public QObject
{
    Q_OBJECT

private slots:
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
};

QTEST_APPLESS_MAIN(InterfaceFactoryTest)
#include "tst_interfacefactory.moc"
