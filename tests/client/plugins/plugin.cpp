// SPDX-License-Identifier: LGPL-3.0-or-later

// A plug-in that offers a scheme of record streams, in variants that are wrong in one way each.

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/plugin.h>

#include <stdexcept>

#ifdef OTHER
#define INTERFACE "tellarix.Plugin/4.2"
#else
#define INTERFACE TELLARIX_PLUGIN_INTERFACE
#endif

#if defined(GOOD)
#define META_DATA "good.json"
#elif defined(NAMELESS)
#define META_DATA "nameless.json"
#elif defined(LISTLESS)
#define META_DATA "listless.json"
#elif defined(STRANGER)
#define META_DATA "stranger.json"
#else
#define META_DATA "bad.json"
#endif

void definedNowhere();

namespace {

/** Tells that code of this file was run. */
const bool HasRun = qputenv("TELLARIX_TEST_HAS_RUN", "yes");

} // namespace

class TestPlugin : public QObject, public Tellarix::Client::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID INTERFACE FILE META_DATA)
    Q_INTERFACES(Tellarix::Client::Plugin)

public:
    bool init(QString *reason) override
    {
        *reason = QStringLiteral("nothing yet");
#if defined(UNRESOLVED)
        definedNowhere();
#elif defined(REFUSING)
        *reason = QStringLiteral("needs a key");
        return false;
#elif defined(THROWING)
        throw std::runtime_error("out of luck");
#endif
        return true;
    }

private:
    Tellarix::IO::RecordStreamScheme _scheme{HasRun ? "test" : "", [] { return nullptr; }};
};

#include "plugin.moc"
