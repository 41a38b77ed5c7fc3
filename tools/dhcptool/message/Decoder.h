#pragma once

#include "message/Message.h"
#include "message/PortSettings.h"

namespace DhcpTool {

/// Decodes frames as a snooping agent for both protocols does. Frames with IPv6 after their tags go to the DHCPv6
/// parser, all others to the DHCPv4 parser.
class Decoder {
public:
    /// `keepState`: one parser for all frames, as in some agents; attributes that a frame does not set keep their
    /// values.
    explicit Decoder(const Ports& ports, bool keepState = false);

    /// The result is valid until the next call.
    const Message& decode(const Arrival& frame);

private:
    void decode4();
    void decode6();
    void judge(DhcpLib::FrameRejection rejection);

    const Kcore::Ptr<Bridging::Config> config_ = Kcore::makeNode<Bridging::Config>();
    const bool keepState_;
    Message message_;
};

}  // namespace DhcpTool
