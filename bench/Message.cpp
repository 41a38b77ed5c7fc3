#include "Message.h"

#include <algorithm>

#include "Kitnet/BigEndian.h"

namespace DhcpBench {

namespace {

constexpr U8 macs[] = {0x02, 0x00, 0x5e, 0x10, 0x00, 0x01, 0x02, 0x00, 0x5e, 0x10, 0x00, 0x02};
constexpr std::size_t clientMacAt = 28, cookieAt = 236, optionsAt = 240;
constexpr U32 magicCookie = 0x63825363;

void append16(Octets& bytes, std::size_t value) {
    bytes.push_back(static_cast<U8>(value >> 8));
    bytes.push_back(static_cast<U8>(value));
}
void append32(Octets& bytes, U32 value) {
    append16(bytes, value >> 16);
    append16(bytes, value);
}

}  // namespace

Octets bigEndian(U32 value) {
    Octets bytes;
    append32(bytes, value);
    return bytes;
}

Octets octets(std::string_view text) { return {text.begin(), text.end()}; }

void append(Octets& bytes, const Octets& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void appendItem(Octets& bytes, U8 code, const Octets& data) {
    bytes.push_back(code);
    bytes.push_back(static_cast<U8>(data.size()));
    append(bytes, data);
}

void appendOption6(Octets& bytes, U16 code, const Octets& data) {
    append16(bytes, code);
    append16(bytes, data.size());
    append(bytes, data);
}

Message::Message(Op op) : bytes_{static_cast<U8>(op), 1, 6, 0} {
    bytes_.resize(optionsAt);
    std::copy_n(macs, 6, bytes_.begin() + clientMacAt);
    write(cookieAt, magicCookie);
}

Message& Message::option(U8 code, const Octets& data) {
    appendItem(bytes_, code, data);
    return *this;
}

Message& Message::pads(std::size_t n) {
    bytes_.resize(bytes_.size() + n);
    return *this;
}

Octets Message::finished(std::size_t atLeast) const {
    Octets bytes = bytes_;
    bytes.push_back(255);
    bytes.resize(std::max(bytes.size(), atLeast));
    return bytes;
}

Message& Message::write(std::size_t at, U32 value) {
    Kitnet::storeBigEndian(bytes_.data() + at, value);
    return *this;
}

Octets frameOf(const Octets& message, const Path& path) {
    Octets frame(std::begin(macs), std::end(macs));
    if (path.vlan != 0) append32(frame, 0x81000000U | path.vlan);
    append32(frame, 0x08004500);
    append16(frame, 20 + 8 + message.size());
    append32(frame, 0);           // identification, fragment
    append32(frame, 0x40110000);  // time to live, UDP, checksum
    append32(frame, path.srcIp);
    append32(frame, path.dstIp);
    append16(frame, path.srcPort);
    append16(frame, path.dstPort);
    append32(frame, static_cast<U32>(8 + message.size()) << 16);
    append(frame, message);
    return frame;
}

}  // namespace DhcpBench
