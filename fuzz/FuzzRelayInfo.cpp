// parseInfoOpt and parseInfoOptNew each agree with their own step-by-step model, in every kind of packet storage. They
// agree with each other on an option 82 that is the last option and holds each sub-option at most once.

#include "OptionsInput.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

/// Whether the message is one that relays write.
bool isWellFormed(const Octets& bytes, U32 offset) {
    const Model::Area area = Model::walk(bytes, offset);
    const auto info = area.last.find(82);
    if (!area.failure.empty() || info == area.last.end()) return false;
    const U32 end = area.last.at(255), first = info->second + 2;
    if (end != first + bytes[info->second + 1] || first == end) return false;
    for (U32 p = offset + 240; p < info->second; p += bytes[p] == 0 ? 1 : bytes[p + 1] + 2u)
        if (bytes[p] == 82) return false;
    std::set<U8> seen;
    U32 p = first;
    for (; p < end; p += Model::at(bytes, p + 1) + 2u)
        if (bytes[p] == 9 || !seen.insert(bytes[p]).second) return false;
    // The collection goes on after the end option and takes the next byte for its length.
    return p == end && bytes.size() == end + 2 && bytes[end + 1] == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    const OptionsInput input(data, size);
    const Model::RelayInfo raw = Model::info(input.bytes, input.offset);
    for (const PktPtr& pkt : packets(input.bytes)) {
        expect(Model::readInfo(parseInfoOpt, pkt, input.offset) == raw);
        const Model::RelayInfo byViews = Model::readInfo(parseInfoOptNew, pkt, input.offset);
        expect(byViews == Model::infoNew(pkt, input.offset));
        if (isWellFormed(input.bytes, input.offset)) expect(raw == byViews);
        expect(bytesOf(*pkt) == input.bytes);
    }
    return 0;
}
