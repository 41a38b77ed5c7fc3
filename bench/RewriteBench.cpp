#include <cstdio>
#include <cstring>
#include <span>

#include "DhcpLib/OptionParser.h"
#include "Measure.h"
#include "SinglePass.h"
#include "Tins.h"

namespace DhcpBench {

namespace {

using Bytes = std::span<const U8>;

const Tyk::String circuitId("Ethernet7/2"), remoteId("02:00:5e:77:00:01");
const Kitnet::IpAddr serverId(0x0a0400fe), linkSelection(0x0a040001);

/// A packet with the input's message. Reuses one buffer, so every contender starts from a copy.
const DhcpLib::PktPtr& copyOf(const Input& input) {
    static const DhcpLib::PktPtr pkt = Kitnet::globalPktManager().newPkt();
    const U32 had = pkt->bytes(), needs = input.messageBytes();
    if (had < needs) pkt->newSharedTailData(needs - had);
    if (had > needs) pkt->delSharedTailData(had - needs);
    std::memcpy(pkt->data(), input.message(), needs);
    return pkt;
}

template <auto prepare, DhcpLib::BootpOption op>
Bytes prepared(const Input& input) {
    const DhcpLib::PktPtr& pkt = copyOf(input);
    prepare(pkt, op, true, circuitId, remoteId, Tyk::String(), serverId, linkSelection, 0, true, Tyk::String(),
            Kitnet::IpGenAddr());
    return {pkt->data(), pkt->bytes()};
}

const Octets& informationToAdd() {
    static const Octets data = [] {
        Octets bytes;
        appendItem(bytes, 1, octets(circuitId.view()));
        appendItem(bytes, 2, octets(remoteId.view()));
        appendItem(bytes, 5, bigEndian(linkSelection.value()));
        appendItem(bytes, 11, bigEndian(serverId.value()));
        return bytes;
    }();
    return data;
}

template <class Rewrite>
bool registerRewrite(const char* operation, const Case& messages, Rewrite rewrite, Rewriting rewriting) {
    const auto floor = [rewriting](const Input& input) {
        return rewriteInOnePass(input.message(), input.messageBytes(), rewriting, informationToAdd());
    };
    const auto general = [rewriting](const Input& input) {
        return rewriteWithTins(input.message(), input.messageBytes(), rewriting, informationToAdd());
    };
    for (const Input& input : messages.inputs) {
        const auto fieldsOf = [](Bytes message) { return parseMessageInOnePass(message.data(), message.size()); };
        const auto expected = fieldsOf(floor(input));
        const Octets bytes = general(input);
        for (const FloorFields& fields : {fieldsOf(rewrite(input)), fieldsOf(bytes)}) {
            const char* const what = difference(expected, fields);
            if (what == nullptr) continue;
            std::fprintf(stderr, "%s/%s: %s differs\n", operation, messages.name.c_str(), what);
            return false;
        }
    }
    measure(operation, messages, library, rewrite);
    measure(operation, messages, tins, general);
    measure(operation, messages, singlePass, floor);
    return true;
}

}  // namespace

bool registerRewriting() {
    using DhcpLib::preparePacket, DhcpLib::preparePacketNew;
    using enum DhcpLib::BootpOption;
    const Case &requests = caseOf("discover"), &replies = caseOf("relayedack");
    return registerRewrite("preparePacket", requests, prepared<preparePacket, bootpRequest>, Rewriting::add) &&
           registerRewrite("preparePacketNew", requests, prepared<preparePacketNew, bootpRequest>, Rewriting::add) &&
           registerRewrite("preparePacket", replies, prepared<preparePacket, bootpReply>, Rewriting::strip) &&
           registerRewrite("preparePacketNew", replies, prepared<preparePacketNew, bootpReply>, Rewriting::strip);
}

}  // namespace DhcpBench
