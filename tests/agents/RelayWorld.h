#pragma once

#include "Bytes.h"
#include "Frame.h"
#include "Steps.h"

namespace DhcpTest {

using namespace DhcpRelay;

inline constexpr char server4[] = "10.82.0.2", server6[] = "2001:db8:82::2";

/// Three client links: eth1, untrusted, with VLAN 20; eth2, trusted; eth3, untrusted, without a DHCPv4 address of its
/// own unless the settings give it that of eth1.
Settings usualSettings();

/// An agent without sockets.
struct World {
    explicit World(const Settings& settings = usualSettings());

    /// Handles a frame that a client link received. Returns the reason if it is dropped, "ignored" if it is not for the
    /// agent, and otherwise the result of `describe`. The counted remarks follow.
    std::string arrives(std::size_t link, const PktPtr& frame, bool checksumReady = true);
    /// The same for a datagram that the server-side socket received.
    std::string arrives(const Octets& datagram, const char* from, U32 ifIndex = 0);

    Context context;
    Transaction last;

private:
    std::string outcome(Reason reason) const;
};

/// A short description of a relayed or delivered message.
std::string describe(const Transaction& t);

/// Fields of a client's frame. Empty addresses mean those that a client without an address uses.
struct SentFrame {
    std::size_t link = 0;
    VlanTag tag{};
    const char* src = "";
    const char* dst = "";
    const char* srcMac = "02:c1:00:00:00:01";
    const char* dstMac = "";
};
PktPtr frameOf(const SentFrame& sent, const Octets& message);

/// Fields of a DHCPv4 message.
struct Message4 {
    U8 op = 1;
    U8 hops = 0;
    U32 xid = 7;
    U16 flags = 0;
    const char* ciaddr = "0.0.0.0";
    const char* yiaddr = "0.0.0.0";
    const char* giaddr = "0.0.0.0";
    const char* chaddr = "02:c1:00:00:00:01";
    const char* options = "63 82 53 63 35 01 01 FF";
    const char* file = "";
};
Octets bytesOf(const Message4& message);

}  // namespace DhcpTest
