// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/authbackend.h>
#include <norvu/gui/pluginwidget.h>

#include <QtTest>

using namespace Norvu::Gui;

class ExtensionPointsTest : public QObject
{
    Q_OBJECT

private slots:
    /** Host and shared object must see one pool, and one type of each interface. */
    void sharesPoolsWithPlugins()
    {
        using Names = AuthBackendFactoryInterface::ServiceNames;
        QCOMPARE(AuthBackendFactoryInterface::ServiceCount(), 0U);
        QLibrary library(NORVU_TEST_PLUGINS "/services.so");
        QVERIFY2(library.load(), qPrintable(library.errorString()));
        QCOMPARE(*AuthBackendFactoryInterface::Services(), Names{"test"});
        QCOMPARE(*PluginWidgetFactoryInterface::Services(), Names{"test"});
        {
            const Tellarix::Core::SmartPointer<AuthBackend> backend(
                AuthBackendFactoryInterface::Create("test"));
            QVERIFY(dynamic_cast<AuthBackend *>(
                static_cast<Tellarix::Core::BaseObject *>(backend.get())));
            QVERIFY(backend->setSource("secret"));
            QVERIFY(!backend->authenticate("user", "guess"));
            QVERIFY(backend->authenticate("user", "secret"));
            backend->abortAuthentication();
            backend->reset();
            QCOMPARE(backend->failure(), std::string());

            const std::unique_ptr<PluginWidget> widget(
                PluginWidgetFactoryInterface::Create(std::string("test")));
            widget->init();
            QCOMPARE(widget->title(), QString("Test"));
            QVERIFY(widget->messagingSubscriptions().empty());
        }
        QVERIFY(library.unload());
        QCOMPARE(AuthBackendFactoryInterface::ServiceCount(), 0U);
        QVERIFY(!PluginWidgetFactoryInterface::Create("test"));
    }
};

QTEST_MAIN(ExtensionPointsTest)
#include "tst_extensionpoints.moc"
