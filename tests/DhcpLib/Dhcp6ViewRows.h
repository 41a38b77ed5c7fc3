#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "Bytes.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "Recorders.h"
#include "platform/Refusal.h"

/// Tables of views over a DHCPv6 option: what each reads from bytes, and what each of its setters changes in them.
namespace DhcpTest {

inline constexpr char noRoom[] = "length value exceeds pkt-length.";
inline constexpr U16 viewedAt = 3;  ///< where a row's option stands in the packet, behind scratch bytes

/// "name=value" of each attribute but those that are the same everywhere; unprintable bytes as \xHH.
inline std::string attributesOf(const Kcore::Node& node) {
    std::string all;
    for (const auto& attribute : node.typeData().attributes()) {
        if (attribute.name == "opt" || attribute.name == "initialized" || attribute.name.ends_with("InPkt")) continue;
        std::string value, quoted;
        attribute.appendText(value, &node);
        Kcore::appendQuoted(quoted, value);
        all.append(all.empty() ? "" : " ").append(attribute.name).append("=").append(quoted, 1, quoted.size() - 2);
    }
    if (const auto* remoteId = dynamic_cast<const DhcpLib::Dhcp6RemoteIdBase*>(&node); remoteId && remoteId->duid())
        all.append(" {").append(attributesOf(*remoteId->duid())).append("}");
    return all;
}

/// A view's class, seen through its base.
struct ViewKind {
    std::function<Kcore::Ptr<Kcore::Node>(const DhcpLib::Dhcp6OptionPtr&)> make;
    void (*initializeAgain)(Kcore::Node&);
    const KitSlab::AllocationTracker* tracker;
};
template <class View>
ViewKind kindOf(std::function<Kcore::Ptr<View>(const DhcpLib::Dhcp6OptionPtr&)> factory) {
    return {factory, [](Kcore::Node& node) { static_cast<View&>(node).handleInitialized(); },
            &View::memAllocationTracker_};
}

struct ReadRow {
    const char* rule;
    ViewKind kind;
    std::string option;
    std::string attributes;
};

/// At every cut, what stands behind the packet has no part in what is read, and nothing is written.
inline void expectRead(const ReadRow& row) {
    const Octets whole = hex("A5*3") + hex(row.option);
    for (std::size_t size = viewedAt; size <= whole.size(); ++size) {
        const Octets cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        std::string read;
        for (const PktPtr& pkt : packets(cut)) {
            const auto view = row.kind.make(DhcpLib::dhcp6OptionFactory(pkt, viewedAt));
            EXPECT_EQ(row.kind.tracker->live(), 1u);
            if (read.empty()) read = attributesOf(*view);
            EXPECT_EQ(attributesOf(*view), read) << "cut to " << size << " bytes, with others behind";
            EXPECT_EQ(bytesOf(*pkt), cut);
            std::fill_n(pkt->data(), pkt->bytes(), U8{0});
            row.kind.initializeAgain(*view);
            EXPECT_EQ(attributesOf(*view), read) << "initialized again";
        }
        EXPECT_EQ(row.kind.tracker->live(), 0u);
        if (size == whole.size()) {
            EXPECT_EQ(read, row.attributes);
        }
    }
}

struct WriteRow {
    const char* rule;
    ViewKind kind;
    std::string before;
    std::function<void(Kcore::Node&)> set;
    std::string after;
    U16 intact = 4;  ///< bytes of the option that no cut takes: what the setter judges
};
template <class View>
std::function<void(Kcore::Node&)> setting(std::function<void(View&)> set) {
    return [set](Kcore::Node& node) { set(static_cast<View&>(node)); };
}

/// The setter changes exactly its bytes, and a new view reads what the cache says; in a packet that ends before those
/// bytes do, it raises and changes neither packet nor cache.
inline void expectWritten(const WriteRow& row) {
    const Octets before = hex("A5*3") + hex(row.before), after = hex("A5*3") + hex(row.after);
    const auto first = [](const Octets& bytes, std::size_t n) { return Octets(bytes.begin(), bytes.begin() + n); };
    std::size_t needed = before.size();
    while (before[needed - 1] == after[needed - 1]) --needed;
    for (std::size_t size = viewedAt + row.intact; size <= before.size(); ++size) {
        SCOPED_TRACE("cut to " + std::to_string(size));
        const PktPtr pkt = packet(first(before, size));
        const auto view = row.kind.make(DhcpLib::dhcp6OptionFactory(pkt, viewedAt));
        const std::string cached = attributesOf(*view);
        const std::string error = internalErrorOf([&] { row.set(*view); });
        EXPECT_EQ(error, size < needed ? noRoom : "");
        EXPECT_EQ(bytesOf(*pkt), first(error.empty() ? after : before, size));
        if (!error.empty()) {
            EXPECT_EQ(attributesOf(*view), cached);
        }
        if (size == before.size()) {
            EXPECT_EQ(attributesOf(*row.kind.make(DhcpLib::dhcp6OptionFactory(pkt, viewedAt))), attributesOf(*view));
        }
    }
}

}  // namespace DhcpTest
