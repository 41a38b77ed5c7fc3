#include "OptionModel.h"

#include <gtest/gtest.h>

#include <random>

#include "DhcpLib/DhcpParser.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// Options areas of which most are nearly right: known codes at every level with lengths that mostly fit.
class Areas {
public:
    Octets next() {
        Octets options;
        for (unsigned n = below(12); n > 0; --n) appendOption(options);
        if (below(8) != 0) options.push_back(255);
        for (unsigned n = below(4); n > 1; --n) appendOption(options);
        if (below(4) == 0) options.resize(options.size() - below(static_cast<unsigned>(options.size()) + 1));
        if (below(4) == 0) options.resize(options.size() + below(60));
        for (unsigned n = below(16); n == 0 && !options.empty(); ++n)
            options[below(static_cast<unsigned>(options.size()))] = byte();
        Octets whole = message(options);
        if (below(16) == 0) whole[236 + below(4)] ^= 1;
        if (below(40) == 0) whole.resize(below(static_cast<unsigned>(whole.size())));
        return whole;
    }
    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }

private:
    U8 byte() { return static_cast<U8>(random_()); }
    U8 oneOf(const Octets& codes) { return below(8) == 0 ? byte() : codes[below(static_cast<unsigned>(codes.size()))]; }
    U8 length(std::size_t right) { return below(12) == 0 ? static_cast<U8>(below(24)) : static_cast<U8>(right); }
    Octets random(unsigned n) {
        Octets bytes(n);
        for (U8& b : bytes) b = byte();
        return bytes;
    }
    Octets item(U8 code, const Octets& data) { return Octets{code, length(data.size())} + data; }
    Octets someItems(const Octets& codes, const Octets& lengths) {
        Octets items;
        for (unsigned n = below(5); n > 0; --n) items = items + item(oneOf(codes), random(oneOf(lengths) % 24u));
        return items;
    }
    Octets vendorBlocks() {
        Octets blocks;
        for (unsigned n = below(4); n > 0; --n) {
            const Octets items = someItems(hex("01 02 00"), hex("04 10 05 00"));
            blocks = blocks + (below(2) == 0 ? hex("00 00 7E D9") : hex("00 00 00 09")) + Octets{length(items.size())} +
                     items;
        }
        return blocks;
    }
    void appendOption(Octets& options) {
        const U8 code = oneOf(hex("00 0C 32 33 35 36 37 3C 52 52 52 5B 5C 3D"));
        Octets data = random(below(3) == 0 ? below(20) : 4 * below(3));
        if (code == 53 && !data.empty()) data[0] %= 16;
        if (code == 82) {
            data = someItems(hex("01 02 97 98 0B 05"), hex("04 03 00"));
            for (unsigned n = below(3); n > 0; --n) data = data + item(9, vendorBlocks());
            data = data + someItems(hex("01 02 05 0B"), hex("04 06"));
        }
        if (data.size() > 255) data.resize(255);
        options = options + (code == 0 ? Octets(1 + below(20)) : item(code, data));
    }

    std::mt19937 random_{20};
};

/// What doParse has to find in the message, put together from the functions that it stands for.
std::string expectedParse(const PktPtr& pkt) {
    std::string out;
    const auto add = [&](const auto&... values) { ((Kcore::appendText(out, values), out.push_back('|')), ...); };
    if (pkt->bytes() < 34) return "refused";
    U8 type = 0;
    const Kcore::String name = getDhcpMsgTypeStringAndOpt(pkt, 0, type);
    add(name, type);
    if (name == "BOOTP") return out + "accepted";
    if (!dhcpOptionBasicCheck(pkt, 0)) return out + "refused";
    Model::LeaseReply lease = Model::readLeaseQuery(pkt, 0);
    if (lease.serverId == Model::LeaseReply().serverId) lease.serverId = {};
    const Model::RelayInfo info = Model::readInfo(parseInfoOptNew, pkt, 0);
    if (!info.serverIdOverride.isAny()) {
        lease.serverId = info.serverIdOverride;
        lease.serverIdPresent = true;
    }
    add(lease.leaseTimePresent, lease.leaseTime, lease.lastTransactionTimePresent, lease.lastTransactionTime,
        lease.serverIdPresent, lease.serverId, lease.ips);
    const auto orEmpty = [](const Kcore::String& s) { return s == "-" ? Kcore::String() : s; };
    Kcore::String host, list, vendorClass;
    parseDot1xProfilingOpts(pkt, host, list, vendorClass, 0);
    add(orEmpty(info.circuitId), orEmpty(info.remoteId), host, list, vendorClass);
    return out + "accepted";
}

std::string actualParse(const PktPtr& pkt) {
    std::string out;
    const auto add = [&](const auto&... values) { ((Kcore::appendText(out, values), out.push_back('|')), ...); };
    PacketParser p(nullptr);
    const bool accepted = p.doParse(pkt, Kitnet::IntfId(), true);
    if (pkt->bytes() < 34) return accepted ? "accepted" : "refused";
    add(p.dhcpMsgType(), p.dhcpMsgTypeOpt());
    if (accepted && p.dhcpMsgType() != "BOOTP") {
        const std::set<Kitnet::IpAddr> ips(p.associatedIps().begin(), p.associatedIps().end());
        add(p.leaseTimeExist(), p.leaseTime(), p.lastTransactionTimeExist(), p.lastTransactionTime(), p.serverIdExist(),
            p.serverId(), ips, p.circuitId(), p.remoteId(), p.hostname(), p.paramReqList(), p.vendorClassId());
        EXPECT_TRUE(std::ranges::is_sorted(p.associatedIps()));
    }
    return out + (accepted ? "accepted" : "refused");
}

void expectAgreement(const PktPtr& pkt, U32 offset) {
    const Octets bytes = bytesOf(*pkt);
    const Model::Area area = Model::walk(bytes, offset);
    Octets codes(256);
    for (unsigned code = 0; code < 256; ++code) codes[code] = static_cast<U8>(code);
    std::vector<DhcpSingleOption*> slots(256, nullptr);
    std::vector<DhcpSingleOptionWithCode> wanted;
    for (const U8 code : codes) wanted.push_back({code, &slots[code]});
    ASSERT_EQ(parseDhcpOptions(pkt, offset, wanted), area.failure.empty());
    for (const U8 code : codes) {
        const auto place = area.last.find(code);
        const void* expected = place == area.last.end() ? nullptr : pkt->data() + place->second;
        ASSERT_EQ(slots[code], expected) << "option " << unsigned{code};
    }
    U8 type = 99;
    const auto [name, number] = Model::messageType(bytes, offset);
    ASSERT_EQ(getDhcpMsgTypeStringAndOpt(pkt, offset, type), name);
    ASSERT_EQ(type, number < 0 ? 99 : number);
    ASSERT_TRUE(Model::readLeaseQuery(pkt, offset) == Model::leaseQuery(bytes, offset));
    ASSERT_EQ(Model::readProfile(pkt, offset), Model::profile(bytes, offset));
    ASSERT_EQ(Model::placesIn(*dhcpMsgOptionsFactory(pkt, static_cast<U16>(offset + 240))),
              Model::optionsOf(bytes, static_cast<U16>(offset + 240)));
    ASSERT_TRUE(Model::readInfo(parseInfoOpt, pkt, offset) == Model::info(bytes, offset));
    ASSERT_TRUE(Model::readInfo(parseInfoOptNew, pkt, offset) == Model::infoNew(pkt, offset));
    if (offset == 0) {
        ASSERT_EQ(actualParse(pkt), expectedParse(pkt));
    }
    ASSERT_EQ(bytesOf(*pkt), bytes);
}

TEST(OptionModel, AgreesOnRandomAreas) {
    Areas areas;
    for (int i = 0; i < 20'000 && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        const U32 offset = areas.below(2) == 0 ? 0 : areas.below(50);
        expectAgreement(packet(Octets(offset, scratch) + areas.next()), offset);
    }
}

/// Positions of the views wrap there, those of the raw walk do not. Each byte of a message once stands at the wrap.
TEST(OptionModel, AgreesAcrossByte65536) {
    const Octets rich = message(
        "35 01 05 36 04 0A 00 00 01 52 2C 01 03 'abc' 02 02 'de' 97 01 'f' 98 00 05 04 0A 00 00 02 0B 04 0A 00 00 03 "
        "09 10 00 00 7E D9 0B 01 03 'ghi' 02 04 0A 00 00 04 0C 01 'j' FF 00 00");
    Areas areas;
    for (U32 i = 0; i < 2 * rich.size() && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        const U32 offset = 65536 - i / 2;
        Octets bytes = Octets(offset, U8{0}) + (i % 2 == 0 ? rich : areas.next()) + Octets(240, U8{0});
        Octets wrapped = areas.next();  // what wrapped positions find: the rest of the message, in capitals
        if (i % 2 == 0) wrapped.assign(rich.begin() + i / 2, rich.end());
        for (U8& byte : wrapped) byte = byte >= 'a' && byte <= 'j' ? static_cast<U8>(byte - 32) : byte;
        std::copy_n(wrapped.begin(), std::min<std::size_t>(wrapped.size(), offset), bytes.begin());
        expectAgreement(packet(bytes), offset);
    }
}

}  // namespace
