#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser.h"
#include "Measure.h"
#include "SinglePass.h"
#include "Tins.h"

namespace DhcpBench {

namespace {

using Kcore::String;

struct MsgType {
    String name;
    U8 number = 0;
};

MsgType msgType(const Input& input) {
    MsgType type;
    type.name = DhcpLib::getDhcpMsgTypeStringAndOpt(input.pkt, input.messageAt, type.number);
    return type;
}

struct RelayInformation {
    Tyk::String circuitId, remoteId, vpnId, intfName;
    bool vssControl = false;
    Kitnet::IpAddr serverIdOverride, linkSelection;
    Kitnet::IpGenAddr srcVtepIp;
};

template <auto parse>
RelayInformation relayInformation(const Input& input) {
    RelayInformation info;
    parse(input.pkt, info.circuitId, info.remoteId, info.vpnId, info.vssControl, info.serverIdOverride,
          info.linkSelection, info.intfName, info.srcVtepIp, input.messageAt);
    return info;
}

DhcpLib::DhcpMsgOptions::Ptr optionsOf(const Input& input) {
    return DhcpLib::dhcpMsgOptionsFactory(input.pkt,
                                          static_cast<U16>(input.messageAt + DhcpLib::Constants::bootpHdrSize + 4));
}

struct LeaseQueryReply {
    Kcore::Duration leaseTime{0}, lastTransactionTime{0};
    std::set<Kitnet::IpAddr> associatedIps;
    Kitnet::IpAddr serverId;
    bool hasLeaseTime = false, hasLastTransactionTime = false, hasServerId = false;
};

LeaseQueryReply leaseQueryReply(const Input& input) {
    LeaseQueryReply reply;
    DhcpLib::parseLeaseQueryOpts(input.pkt, reply.leaseTime, reply.lastTransactionTime, reply.associatedIps,
                                 reply.serverId, reply.hasLeaseTime, reply.hasLastTransactionTime, reply.hasServerId,
                                 input.messageAt);
    return reply;
}

struct Profile {
    String hostName, paramReqList, vendorClassId;
};

Profile profile(const Input& input) {
    Profile found;
    DhcpLib::parseDot1xProfilingOpts(input.pkt, found.hostName, found.paramReqList, found.vendorClassId,
                                     input.messageAt);
    return found;
}

/// Benchmarks a reader of one message, libtins with the same task, and the floor, which always reads everything.
template <class Operation>
void measureReader(const char* operationName, Question question, std::initializer_list<const char*> cases,
                   Operation operation) {
    for (const char* const name : cases) {
        const Case& measured = caseOf(name);
        measure(operationName, measured, library, operation);
        measure(operationName, measured, tins,
                [question](const Input& input) { return askTins(input.message(), input.messageBytes(), question); });
        measure(operationName, measured, singlePass,
                [](const Input& input) { return parseMessageInOnePass(input.message(), input.messageBytes()); });
    }
}

void registerLeaseQuery() {
    static constexpr U32 giaddr = 0x0a040001, xid = 0x5eed0003;
    const Case& any = caseOf("discover");
    const auto build = [](const Input&) {
        return DhcpLib::buildDhcpLeaseQuery(true, Kitnet::IpAddr(giaddr), Kitnet::EthAddr(), Kitnet::IpAddr(), xid);
    };
    measure("buildDhcpLeaseQuery", any, library, build);
    measure("buildDhcpLeaseQuery", any, tins, [](const Input&) { return leaseQueryWithTins(giaddr, xid); });
    static const Octets query =
        Message(Op::request).xid(xid).giaddr(giaddr).option(53, Octets{10}).option(55, Octets{51, 91, 92}).finished();
    measure("buildDhcpLeaseQuery", any, singlePass, [](const Input&) { return Octets(query); });
}

}  // namespace

void registerReading() {
    using enum Question;
    measureReader("dhcpOptionBasicCheck", wellFormed, {"mixed", "252options", "1100pads"},
                  [](const Input& input) { return DhcpLib::dhcpOptionBasicCheck(input.pkt, input.messageAt); });
    measureReader("getDhcpMsgTypeStringAndOpt", Question::msgType, {"mixed"}, DhcpBench::msgType);
    measureReader("parseInfoOpt", Question::relayInformation, {"relayed", "mixed"},
                  DhcpBench::relayInformation<DhcpLib::parseInfoOpt>);
    measureReader("parseInfoOptNew", Question::relayInformation, {"relayed", "mixed"},
                  DhcpBench::relayInformation<DhcpLib::parseInfoOptNew>);
    measureReader("parseLeaseQueryOpts", leaseQuery, {"leaseactive", "mixed"}, leaseQueryReply);
    measureReader("parseDot1xProfilingOpts", profiling, {"discover", "mixed"}, profile);
    measureReader("DhcpMsgOptions", wellFormed, {"mixed", "252options"}, optionsOf);
    measureReader("DhcpMsgOptions, all views", wellFormed, {"mixed", "252options"}, [](const Input& input) {
        auto options = optionsOf(input);
        for (const auto& entry : options->option()) {
            const auto* view = entry.second.get();
            hold(view);
        }
        return options;
    });
    registerLeaseQuery();
}

}  // namespace DhcpBench
