// The vendor sub-option. Reading stays inside the packet. An added block has the announced size, is the only change,
// and is read back.

#include "OptionsInput.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

using Model::RelayInfo;

RelayInfo readBlock(const Octets& bytes, const PktPtr& pkt) {
    RelayInfo read;
    parseVendorSpecificSubOpt(Wire::ByteView(*pkt), 0, read.intfName, read.srcVtepIp);
    expect(bytesOf(*pkt) == bytes);
    return read;
}

Kitnet::IpGenAddr addressIn(const Octets& bytes) {
    if (bytes[0] % 4 == 0) return Model::address(bytes, 1);
    if (bytes[0] % 4 == 1) return {};
    U8 sixteen[16];
    for (std::size_t i = 0; i < 16; ++i) sixteen[i] = Model::at(bytes, i + 1);
    return Kitnet::Ip6Addr::fromBytes(sixteen);
}

/// Writes an item over bytes of the buffer, from bytes of the buffer.
void checkItem(const Octets& bytes, std::size_t at, U8 len) {
    Kcore::Bytes buf;
    buf.append(bytes);
    auto pos = static_cast<U32>(at);
    setInfoData(buf, pos, 7, len, buf.data());
    Octets expected = bytes;
    expected.resize(std::max(bytes.size(), at + 2 + len));
    overwrite(expected, at, Octets{7, len} + Octets(bytes.begin(), bytes.begin() + len));
    expect(Octets(buf.begin(), buf.end()) == expected && pos == expected.size());
}

/// Adds a block after `existing` bytes of sub-option 9, which contain no own block.
void checkAdding(const Octets& existing, const Kcore::String& name, const Kitnet::IpGenAddr& vtep) {
    const U32 d = quorvaVendorSpecificSubOptLen(name, vtep);
    const bool fresh = existing.empty();
    if (existing.size() + d + 5 > 255) return;
    Octets bytes = hex("52 00 09") + Octets{static_cast<U8>(existing.size())} + existing + Octets(300, scratch);
    auto* info = reinterpret_cast<DhcpSingleOption*>(bytes.data());
    auto* subOption = reinterpret_cast<DhcpSingleOption*>(&bytes[2]);
    if (fresh) bytes[2] = bytes[3] = scratch;
    const std::size_t added = addVendorSpecificSubOption(info, 0, fresh ? nullptr : subOption, name, vtep);
    expect(added == (d == 0 ? 0 : d + (fresh ? 7 : 5)));
    if (d == 0) return;
    expect(added == getVendorSpecificSubOptionLenAdd(name, vtep, fresh ? "" : "x", 0));
    Kcore::Bytes block;
    U32 pos = 0;
    addQuorvaVendorSpecificSubOpt(block, pos, name, vtep);
    expect(pos == d + 5);
    Octets expected = hex("52 00 09") + Octets{static_cast<U8>(existing.size() + pos)} + existing;
    expected = expected + Octets(block.begin(), block.end());
    expected = expected + Octets(304 + existing.size() - expected.size(), scratch);
    expect(bytes == expected);

    const PktPtr pkt = packet(Octets(bytes.begin() + 2, bytes.end()));
    DhcpVendorSpecificEntOption* found = nullptr;
    auto* first = reinterpret_cast<DhcpVendorSpecificEntOption*>(&bytes[4]);
    if (!isVendorSpecificQuorvaEntno(first, bytes[3], &found)) return;  // the existing bytes hide the new block
    if (reinterpret_cast<U8*>(found) != &bytes[4 + existing.size()]) return;
    expect(reinterpret_cast<U8*>(getNextVendorSpecificEntOpt(found)) == found->data() + d);
    auto view = dhcpInformationSubOptionFactory(pkt, 0);
    auto blocks = dhcpVendorSpecificSubOptFactory(view);
    expect(calculateNonQuorvaVendorLen(view, blocks) == existing.size());
    const RelayInfo read = readBlock(Octets(bytes.begin() + 2, bytes.end()), pkt);
    RelayInfo unbounded;
    parseVendorSpecificSubOpt(reinterpret_cast<DhcpSingleOption*>(&bytes[2]), unbounded.intfName, unbounded.srcVtepIp);
    expect(unbounded == read);
    expect(read.intfName == (name.empty() ? Kcore::String("-") : name));
    expect(read.srcVtepIp == (vtep.isUsable() ? vtep : Kitnet::IpGenAddr()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 19) return 0;
    const Octets contents(data, data + 17), bytes(data + 18, data + size);
    RelayInfo expected;
    Model::takeVendorBlock(bytes, 0, expected);
    for (const PktPtr& pkt : packets(bytes)) expect(readBlock(bytes, pkt) == expected);
    const std::size_t nameSize = std::min<std::size_t>(data[17] % 64, bytes.size());
    const Kcore::String name = Model::text(bytes, 0, nameSize);
    if (!bytes.empty()) checkItem(bytes, data[17] % bytes.size(), static_cast<U8>(std::min(nameSize, bytes.size())));
    checkAdding(Octets(bytes.begin() + static_cast<std::ptrdiff_t>(nameSize), bytes.end()), name, addressIn(contents));
    return 0;
}
