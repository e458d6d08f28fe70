// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinkprotocol.h>

#include <cstdlib>

using namespace Tellarix::IO;

// What a server may send, first as lines, then as packets: no step may stand still or overrun.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view all(reinterpret_cast<const char *>(data), size);
    for (std::string_view rest = all; !rest.empty();) {
        const SeedLinkReply reply = parseSeedLinkReply(rest);
        if (reply.kind == SeedLinkReply::Kind::NeedsBytes ||
            reply.kind == SeedLinkReply::Kind::TooLong)
            break;
        if (reply.size == 0 || reply.size > rest.size())
            std::abort();
        rest.remove_prefix(reply.size);
    }
    for (std::string_view rest = all; !rest.empty();) {
        const SeedLinkPacket packet = parseSeedLinkPacket(rest);
        if (packet.kind == SeedLinkPacket::Kind::NeedsBytes ||
            packet.kind == SeedLinkPacket::Kind::Lost)
            break;
        if (packet.size == 0 || packet.size > rest.size() || packet.text.size() > packet.size)
            std::abort();
        rest.remove_prefix(packet.size);
    }
    return 0;
}
