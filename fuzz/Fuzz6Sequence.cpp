// DHCPv6 calls one after the other: a message is built, relayed, changed through header and option views while it
// grows, and parsed. What is read back is what was written, and a call that refuses or throws changes no byte.

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6Identifiers.h"
#include "DhcpLib/Dhcp6MessageBuilder.h"
#include "DhcpLib/OptionParser.h"
#include "OptionsInput.h"
#include "Recorders.h"
#include "Steps.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

constexpr std::size_t mostSteps = 40;

/// An option of the model, with those in its data.
struct Node {
    U16 type;
    Octets data;
    std::vector<Node> nested;

    Octets image() const {
        Octets inside = data;
        for (const Node& node : nested) inside = inside + node.image();
        const auto n = inside.size();
        return Octets{static_cast<U8>(type >> 8), static_cast<U8>(type), static_cast<U8>(n >> 8), static_cast<U8>(n)} +
               inside;
    }
};

/// Builds a message and its model side by side.
Octets built(Steps& steps, U32 most) {
    Dhcp6MessageBuilder message(Dhcp6MsgType::request, Dhcp6Xid(1, 2, 3), most);
    Octets expected = hex("03 01 02 03");
    std::vector<Node> nodes;
    std::vector<Dhcp6Option::Ptr> open;  // the last option and those that contain it, outermost first
    const auto imageOf = [&](const std::vector<Node>& all) {
        Octets image = expected;
        for (const Node& node : all) image = image + node.image();
        return image;
    };
    for (std::size_t n = 0; n < mostSteps && steps.more(); ++n) {
        const U8 how = steps.u8();
        if (how % 8 == 7) break;
        // Not 0, which ends the options for a reader.
        const auto type = std::max(U16{1}, how % 8 == 6 ? steps.u16() : U16{steps.u8()});
        const auto dhcp6Type = static_cast<Dhcp6OptionType>(type);
        const std::size_t depth = open.empty() || how % 2 == 0 ? 0 : 1 + steps.below(open.size());
        std::vector<Node> changed = nodes;
        std::vector<Node>* level = &changed;
        for (std::size_t i = 0; i < depth; ++i) level = &level->back().nested;
        Dhcp6Option::Ptr option;
        if (depth == 0) {
            const Octets data = steps.octets();
            option = message.add(dhcp6Type, std::span<const U8>(data));
            level->push_back({type, data, {}});
        } else {
            const std::size_t len = steps.u8();
            option = message.addNested(open[depth - 1], dhcp6Type, len);
            level->push_back({type, Octets(len, 0), {}});
        }
        const Octets image = imageOf(changed);
        expect(static_cast<bool>(option) == (image.size() <= most));
        if (!option) continue;
        nodes = changed;
        open.resize(depth);
        open.push_back(option);
        expect(bytesOf(*message.pkt()) == image && message.bytesLeft() == most - image.size());
    }
    return imageOf(nodes);
}

/// Expects that the options that dhcp6MessageOptions lists follow each other in the message. Returns the end of the
/// last.
std::size_t checkListed(const PktPtr& pkt, const Dhcp6MessagePlace& place, U32 headerBytes) {
    const Octets bytes = bytesOf(*pkt);
    std::size_t at = place.offset + headerBytes;
    const std::size_t end = std::min<std::size_t>(place.end, bytes.size());
    for (const auto& option : dhcp6MessageOptions(pkt, place)) {
        expect(option->offset() == at && at + 4 <= end);
        expect(option->opt() == (bytes[at] << 8 | bytes[at + 1]) &&
               option->len() == (bytes[at + 2] << 8 | bytes[at + 3]));
        at += 4u + option->len();
        expect(at <= end);
    }
    return at;
}

class Changes {
public:
    Changes(const PktPtr& pkt, Steps steps) : pkt_(pkt), steps_(steps) {}

    std::string run() {
        for (std::size_t n = 0; n < mostSteps && steps_.more(); ++n) step();
        log_.append(pkt_->data(), pkt_->data() + pkt_->bytes());
        return log_;
    }

private:
    void note(const Kcore::Node& view) {
        for (const auto& attribute : view.typeData().attributes()) attribute.appendText(log_, &view);
    }
    U16 place() { return static_cast<U16>(steps_.u16() % (pkt_->bytes() + 40)); }
    template <class Act>
    void expectWrite(std::size_t at, const Octets& written, Act act) {
        Octets expected = bytesOf(*pkt_);
        const bool fits = at + written.size() <= expected.size();
        expect(internalErrorOf(act).empty() == fits);
        if (fits) overwrite(expected, at, written);
        expect(bytesOf(*pkt_) == expected);
    }
    template <class Address>
    static Octets imageOf(const Address& address) {
        return {address.bytes(), address.bytes() + sizeof address};
    }

    void step() {
        switch (steps_.below(8)) {
            case 0:
                return regHeader();
            case 1:
                return relayHeader();
            case 2:
                return resize();
            case 3:
                return changeCollection();
            case 4:
                return setOption();
            case 5:
                return wrap();
            case 6:
                return read();
            default:
                return baseHeader();
        }
    }
    void baseHeader() {
        const U16 at = place();
        const U8 type = steps_.u8();
        const Kcore::Ptr<Dhcp6HdrBase> header = Kcore::makeNode<Dhcp6HdrBase>(pkt_, at);
        expectWrite(at, {type}, [&] { header->msgTypeIs(static_cast<Dhcp6MsgType>(type)); });
        note(*header);
    }
    void regHeader() {
        const U16 at = place();
        const auto header = dhcp6RegHdrFactory(pkt_, at);
        const auto xid = steps_.address<Dhcp6Xid>();
        expectWrite(at + 1u, imageOf(xid), [&] { header->xidIs(xid); });
        note(*header);
    }
    void relayHeader() {
        const U16 at = place();
        const auto header = dhcp6RelayHdrFactory(pkt_, at);
        const auto link = steps_.address<Kitnet::Ip6Addr>(), peer = steps_.address<Kitnet::Ip6Addr>();
        const U8 n = steps_.u8(), sum = static_cast<U8>(header->hopCount() + n);
        expectWrite(at + 1u, {sum}, [&] { expect(header->hopCountInc(n) == sum); });
        expectWrite(at + 1u, {n}, [&] { header->hopCountIs(n); });
        expectWrite(at + 2u, imageOf(link), [&] { header->linkAddrIs(link); });
        expectWrite(at + 18u, imageOf(peer), [&] { header->peerAddrIs(peer); });
        note(*header);
    }
    void resize() {
        const U8 how = steps_.u8();
        const U32 n = how / 4u;
        if (how % 4 == 0)
            pkt_->delSharedTailData(std::min(n, pkt_->bytes()));
        else if (pkt_->bytes() < 4000)
            how % 4 == 1 ? pkt_->newSharedHeadData(n) : pkt_->newSharedTailData(n);
    }
    void changeCollection() {
        if (!options_ || steps_.u8() % 4 == 0) options_ = dhcp6OptionsFactory(pkt_, place());
        const auto type = static_cast<Dhcp6OptionType>(steps_.u8());
        const auto given = dhcp6OptionFactory(pkt_, place());
        const Octets before = bytesOf(*pkt_);
        if (steps_.u8() % 4 != 0) {
            options_->optionIs(type, given);
            expect(options_->option(type) == given);
        } else {
            const auto old = options_->option(type);
            expect(options_->optionDel(type) == old && !options_->option(type));
        }
        if (const auto userClass = options_->userClassOption())
            log_.append(userClass->userClassData(steps_.u8()).view());
        if (const auto vendor = options_->vendorSpecificInformationOption())
            for (int i = 0; i < 3; ++i) log_.append(vendor->vendorOptionData(steps_.u8()).view());
        for (const auto& [code, view] : options_->option()) note(*view);
        expect(bytesOf(*pkt_) == before);
    }
    void setOption() {
        if (!option_ || steps_.u8() % 2 == 0) option_ = dhcp6OptionFactory(pkt_, place());
        const std::size_t at = option_->offset(), size = pkt_->bytes();
        const U16 value = steps_.u16() % 300;
        const Octets image{static_cast<U8>(value >> 8), static_cast<U8>(value)};
        expectWrite(at, image, [&] { option_->optTypeIs(static_cast<Dhcp6OptionType>(value)); });
        if (at + 4 + value <= size) {
            expectWrite(at + 2, image, [&] { option_->lenIs(value); });
            const std::size_t from = steps_.u16() % (size - value);
            const Octets source(pkt_->data() + from, pkt_->data() + from + value);
            expectWrite(at + 4, source, [&] { option_->dataIs(pkt_->data() + from); });
        }
        note(*option_);
    }
    /// Puts what the packet contains into a relay message, which becomes the packet.
    void wrap() {
        const auto link = steps_.address<Kitnet::Ip6Addr>();
        Dhcp6MessageBuilder outer(Dhcp6MsgType::relayForward, steps_.u8(), link, link);
        const Octets inner = bytesOf(*pkt_);
        if (inner.size() > 3000 || !outer.addMessage(inner)) return;
        pkt_ = outer.pkt();
        options_ = nullptr;
        option_ = nullptr;
        const auto chain = dhcp6RelayChain(pkt_, {0, pkt_->bytes()});
        expect(!chain.empty() && chain[0] == Dhcp6MessagePlace{0, pkt_->bytes()});
        const auto relayMsg = Dhcp6Options(pkt_, 34).option(Dhcp6OptionType::relayMsg);
        expect(relayMsg && relayMsg->len() == inner.size() && dhcp6OptionBasicCheck(pkt_, 0));
        expect(checkListed(pkt_, chain[0], 34) == pkt_->bytes());
    }
    void read() {
        const Octets before = bytesOf(*pkt_);
        const U16 at = place();
        for (const auto& message : dhcp6RelayChain(pkt_, {at, pkt_->bytes()})) {
            const U8 type = Wire::load<U8>(*pkt_, message.offset);
            checkListed(pkt_, message, type == 12 || type == 13 ? 34 : 4);
            const Dhcp6Identifiers found = dhcp6Identifiers(pkt_, message);
            log_.append(found.clientId.duidEntId.view()).append(found.remoteId.l2IntfId.name());
            Kcore::appendText(log_, found.clientId.option.len);
        }
        expect(bytesOf(*pkt_) == before);
    }

    PktPtr pkt_;
    Steps steps_;
    Dhcp6Options::Ptr options_;
    Dhcp6Option::Ptr option_;
    std::string log_;
};

}  // namespace

/// The input: the bound of the message (1, times 16), the steps of the builder up to one that ends it, then the
/// changes.
extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size > 4000) return 0;
    Steps steps(data, size);
    const U32 most = 20 + steps.u8() * 16u;
    const Octets message = built(steps, most);
    const Dhcp6MessagePlace whole{0, static_cast<U32>(message.size())};
    expect(dhcp6OptionBasicCheck(packet(message), 0));
    expect(checkListed(packet(message), whole, 4) == message.size());
    std::string first;
    for (const PktPtr& pkt : packets(message)) {
        const std::string log = Changes(pkt, steps).run();
        expect(first.empty() || log == first);
        first = log;
    }
    return 0;
}
