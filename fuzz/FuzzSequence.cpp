// DHCPv4 calls one after the other on one packet: views that stay while the packet grows and shrinks, setters on views
// that overlap, collections that are changed and read again, and rewrites in both generations. The results do not
// depend on the packet's storage, and a call that refuses or throws changes no byte.

#include "Kcore/Exception.h"
#include "OptionsInput.h"
#include "Recorders.h"
#include "Steps.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

constexpr std::size_t mostSteps = 60, mostKept = 12, mostBytes = 6000;

class Sequence {
public:
    Sequence(const PktPtr& pkt, Steps steps) : pkt_(pkt), steps_(steps) {}

    /// Runs all steps. Returns a text of their results.
    std::string run() {
        for (std::size_t n = 0; n < mostSteps && steps_.more(); ++n) {
            step();
            note(pkt_->bytes());
        }
        log_.append(pkt_->data(), pkt_->data() + pkt_->bytes());
        return log_;
    }

private:
    void note(const auto& value) {
        Kcore::appendText(log_, value);
        log_.push_back(' ');
    }
    void noteView(const Kcore::Node& view) {
        for (const auto& attribute : view.typeData().attributes()) attribute.appendText(log_, &view);
    }
    template <class Items>
    void noteItems(const Items& items) {
        for (const auto& [type, view] : items.option()) noteView(*view);
    }

    void step() {
        switch (steps_.below(16)) {
            case 0:
                return resize();
            case 1:
                return collect();
            case 2:
                return setView();
            case 3:
                return changeCollection();
            case 4:
                return rewrite(RelayGeneration::preparePacket);
            case 5:
                return rewrite(RelayGeneration::preparePacketNew);
            case 6:
                return writeServerId();
            case 7:
                return readPointers();
            case 8:
                return removeInfo();
            case 9:
                return setHeader();
            case 10:
                return openBlock();
            case 11:
                return readAll();
            case 12:
                return look();
            case 13:
                return keepView();
            case 14:
                return writeBytes();
            default:
                return reread();
        }
    }

    void resize() {
        const U8 how = steps_.u8();
        const U32 n = how / 4u * (how % 8 == 3 ? 40u : 1u);
        if (how % 4 == 0) {
            expect(n <= pkt_->bytes() || throwsRange([&] { pkt_->delSharedTailData(n); }));
            if (n <= pkt_->bytes()) pkt_->delSharedTailData(n);
        } else if (pkt_->bytes() + n <= mostBytes) {
            const Octets before = bytesOf(*pkt_);
            how % 4 == 1 ? pkt_->newSharedHeadData(n) : pkt_->newSharedTailData(n);
            const Octets zeros(n, 0);
            expect(bytesOf(*pkt_) == (how % 4 == 1 ? zeros + before : before + zeros));
        }
    }
    template <class Act>
    static bool throwsRange(Act act) {
        try {
            act();
        } catch (const Kcore::RangeException&) {
            return true;
        }
        return false;
    }

    void collect() {
        if (kept_.size() == mostKept) kept_.erase(kept_.begin());
        kept_.push_back(dhcpMsgOptionsFactory(pkt_, steps_.u8()));
        noteItems(*kept_.back());
    }
    DhcpMsgOptions* collection() { return kept_.empty() ? nullptr : kept_[steps_.below(kept_.size())].get(); }
    DhcpMsgOption::Ptr view() {
        if (!views_.empty() && steps_.u8() % 2 == 0) return views_[steps_.below(views_.size())];
        const DhcpMsgOptions* const options = collection();
        if (options == nullptr || options->option().empty()) return nullptr;
        const auto entries = options->option();
        auto entry = entries.begin();
        for (std::size_t at = steps_.below(entries.size()); at > 0; --at) ++entry;
        return (*entry).second;
    }
    void keepView() {
        const auto kept = view();
        if (views_.size() == mostKept) views_.erase(views_.begin());
        views_.push_back(kept ? kept : dhcpMsgOptionFactory(pkt_, steps_.u16()));
        noteView(*views_.back());
    }

    /// Expects that `act` writes `written` at `at` and nothing else, or throws and writes nothing.
    template <class Act>
    void expectWrite(std::size_t at, const Octets& written, bool fits, Act act) {
        Octets expected = bytesOf(*pkt_);
        expect(internalErrorOf(act).empty() == fits);
        if (fits) overwrite(expected, at, written);
        expect(bytesOf(*pkt_) == expected);
    }
    void setView() {
        const auto option = view();
        if (!option) return;
        const std::size_t at = option->offset(), size = pkt_->bytes();
        const U8 how = steps_.u8(), value = steps_.u8();
        if (how % 3 == 0) {
            expectWrite(at, {value}, at < size, [&] { option->optIs(value); });
            expect(at >= size || option->opt() == value);
        } else if (how % 3 == 1) {
            const U8 before = option->len();
            const bool fits = at + 2 + value <= size;
            expectWrite((at + 1) % 65536, {value}, fits, [&] { option->lenIs(value); });
            expect(option->len() == (fits ? value : before));
        } else {
            // From this packet, so that source and target may overlap.
            const std::size_t len = option->len(), from = size <= len ? 0 : steps_.u16() % (size - len);
            if (len > size || option->data() == nullptr) return;
            const Octets source(pkt_->data() + from, pkt_->data() + from + len);
            expectWrite(at + 2, source, at + 2 + len <= size, [&] { option->dataIs(pkt_->data() + from); });
        }
    }

    void changeCollection() {
        DhcpMsgOptions* const options = collection();
        if (options == nullptr) return;
        const auto type = static_cast<DhcpOptionType>(steps_.u8());
        const Octets before = bytesOf(*pkt_);
        const auto old = options->option(type);
        if (const auto given = view(); steps_.u8() % 8 != 0) {
            options->optionIs(type, given);
            expect(options->option(type) == given);
        } else if (steps_.u8() % 4 != 0) {
            expect(options->optionDel(type) == old && !options->option(type));
        } else {
            options->optionDelAll();
            expect(options->option().empty());
        }
        expect(bytesOf(*pkt_) == before);
    }

    void rewrite(RelayGeneration generation) {
        const U8 first = steps_.u8(), second = steps_.u8();
        RelayRewrite args{.op = BootpOption{first % 4u}, .infoOpt = first % 8 < 6};
        if ((first & 8) != 0) args.circuitId = steps_.text();
        if ((first & 16) != 0) args.remoteId = steps_.text();
        if ((first & 32) != 0) args.vpnId = steps_.text();
        if ((first & 64) != 0) args.vendorSpecificSubOptIntfName = steps_.text();
        if ((second & 1) != 0) args.serverId = steps_.address<Kitnet::IpAddr>();
        if ((second & 2) != 0) args.linkselectionId = steps_.address<Kitnet::IpAddr>();
        if ((second & 4) != 0) args.vendorSpecificSubOptSrcVtepIp = steps_.address<Kitnet::IpAddr>();
        args.vssControlDisable = (second & 8) != 0;
        args.offset = (second & 16) != 0 ? steps_.u8() : 0;
        const auto forecast = relayRewriteCheck(pkt_, args, generation);
        const Octets before = bytesOf(*pkt_);
        bool done = false;
        const std::string failed = assertionOf([&] { done = relayRewrite(pkt_, args, generation); });
        expect(failed.empty() == (forecast.verdict != RelayRewriteVerdict::assertion));
        expect(done || bytesOf(*pkt_) == before);
        expect(!forecast.isRewritable() || done);
        expect(!done || pkt_->bytes() == args.offset + forecast.messageBytes);
        note(forecast.verdict);
    }

    void writeServerId() {
        const auto id = steps_.address<Kitnet::IpAddr>();
        const Model::Area area = Model::walk(bytesOf(*pkt_), 0);
        const auto option = area.last.find(54);
        const bool there = area.failure.empty() && option != area.last.end();
        const std::size_t at = there ? option->second + 2u : 0;
        const Octets before = bytesOf(*pkt_);
        const bool fits = there && Model::at(before, at - 1) != 0 && at + 4 <= before.size();
        bool done = false;
        expectWrite(at, fits ? Octets(id.bytes(), id.bytes() + 4) : Octets(), true,
                    [&] { done = setServerId(pkt_, id); });
        expect(done == (area.failure.empty() && (!there || fits)));
        // An address over a shorter option changes what follows, and perhaps which option 54 is the last one.
        const Octets after = bytesOf(*pkt_);
        const Model::Area changed = Model::walk(after, 0);
        const auto last = changed.last.find(54);
        const bool isRead = changed.failure.empty() && last != changed.last.end() && after[last->second + 1] == 4;
        expect(getServerId(pkt_) == (isRead ? Model::address(after, last->second + 2) : Kitnet::IpAddr()));
        // A new view sees the address, too.
        if (fits) expect(Wire::load<Kitnet::IpAddr>(*pkt_, static_cast<U32>(at)) == id);
    }

    /// The readers that give pointers into the packet.
    void readPointers() {
        const U32 offset = steps_.u8() % 64;
        if (!dhcpOptionBasicCheck(pkt_, offset)) return;
        DhcpOptions* options = nullptr;
        DhcpSingleOption *info = nullptr, *end = nullptr, *behind = nullptr;
        getDhcpOptions(pkt_, offset, options, info, end, behind);
        expect(reinterpret_cast<U8*>(behind) == pkt_->data() + pkt_->bytes() && end->code == 255);
        DhcpSingleOption* last = nullptr;
        for (DhcpSingleOption* at = &options->firstOption; at != end; at = getDhcpNextOpt(at)) {
            expect(at < end);
            if (at->code == 82) last = at;
        }
        expect(info == last);
        if (info == nullptr || reinterpret_cast<U8*>(info) + 2 + info->len > reinterpret_cast<U8*>(end)) return;
        DhcpSingleOption *circuit = nullptr, *vendor = nullptr;
        std::vector<DhcpSingleOptionWithCode> wanted{{1, &circuit}, {9, &vendor}};
        const auto listed = subOptions(findOption(pkt_, offset, 82));
        const auto isModelled = [](const FoundOption& o) { return o.isWhole() && o.code() != 0; };
        if (listed.empty() || !std::all_of(listed.begin(), listed.end(), isModelled)) return;
        auto* const first = reinterpret_cast<DhcpSingleOption*>(info->data());
        expect(parseDhcpSubOptsInOption(first, info->len, wanted));
        for (const FoundOption& found : listed) {
            if (found.code() == 1) expect(circuit != nullptr);
            if (found.code() == 9) expect(vendor != nullptr);
        }
        if (vendor != nullptr) note(vendor->len);
    }

    void removeInfo() {
        const Octets before = bytesOf(*pkt_);
        const U32 offset = steps_.u8() % 64;
        const InfoRemoval removal = removeInfoOption(pkt_, offset);
        expect(pkt_->bytes() == before.size());
        expect(removal.options != 0 || bytesOf(*pkt_) == before);
        if (removal.area == AreaState::wellFormed)
            expect(!findOption(pkt_, offset, 82) && dhcpOptionBasicCheck(pkt_, offset));
        note(removal.options);
    }

    void setHeader() {
        const U32 offset = steps_.u8(), value = steps_.u32();
        const Octets before = bytesOf(*pkt_);
        const std::string failed = assertionOf([&] {
            const auto header = dhcpHdrWrapperFactory(pkt_, offset);
            header->xidIs(value);
            header->hopsIs(static_cast<U8>(value));
            header->giaddrIs(Kitnet::IpAddr(value));
            header->flagsIs(static_cast<U16>(value));
            expect(header->xid() == value && header->giaddr().value() == value);
            pkt_->newSharedTailData(1);  // the storage may move; the header follows it
            expect(header->xid() == value && header->hops() == static_cast<U8>(value));
            pkt_->delSharedTailData(1);
        });
        const bool fits = offset + sizeof(DhcpHdr) <= before.size();
        expect(failed.empty() == fits && (fits || bytesOf(*pkt_) == before));
    }

    void openBlock() {
        const U16 at = steps_.u16() % 600;
        const U32 entno = steps_.u32();
        const U8 len = steps_.u8();
        Octets header{0, 0, 0, 0, len};
        Kitnet::storeBigEndian(header.data(), entno);
        expectWrite(at, header, at + header.size() <= pkt_->bytes(), [&] {
            const auto block = dhcpVendorSpecificDataFactory(pkt_, at, entno, len);
            noteItems(*block);
            expect(block->entno() == entno && block->len() == len);
        });
    }

    void readAll() {
        const U32 offset = steps_.u8() % 64;
        const Octets bytes = bytesOf(*pkt_);
        expect(Model::readLeaseQuery(pkt_, offset) == Model::leaseQuery(bytes, offset));
        expect(Model::readProfile(pkt_, offset) == Model::profile(bytes, offset));
        expect(Model::readInfo(parseInfoOpt, pkt_, offset) == Model::info(bytes, offset));
        expect(Model::readInfo(parseInfoOptNew, pkt_, offset) == Model::infoNew(pkt_, offset));
        expect(bytesOf(*pkt_) == bytes);
        for (const auto& options : kept_) noteItems(*options);
        for (const auto& option : views_) noteView(*option);
    }

    void look() {
        const U32 offset = steps_.u8() % 64;
        const U8 code = steps_.u8();
        const FoundOption found = findOption(pkt_, offset, code);
        note(found.offset());
        note(found.data());
        for (const FoundOption& subOption : subOptions(found)) note(subOption.data());
        const auto circuit = findInfoSubOption(pkt_, offset, DhcpInformationSubOptionType::circuitId);
        expect(!circuit || circuit.code() == 1);
        note(getDhcpMsgType(pkt_, offset));
    }

    void writeBytes() {
        const U16 at = steps_.u16();
        const Octets bytes = steps_.octets();
        if (at + bytes.size() <= pkt_->bytes()) Wire::store(*pkt_, at, std::span<const U8>(bytes));
    }

    /// A fresh collection holds what a model finds, whatever happened before.
    void reread() {
        const auto offset = static_cast<U16>(steps_.u8());
        expect(Model::placesIn(*dhcpMsgOptionsFactory(pkt_, offset)) == Model::optionsOf(bytesOf(*pkt_), offset));
    }

    const PktPtr pkt_;
    Steps steps_;
    std::vector<DhcpMsgOptions::Ptr> kept_;
    std::vector<DhcpMsgOption::Ptr> views_;
    std::string log_;
};

}  // namespace

/// The input: a message or its options (see OptionsInput), preceded by their length (2), then the steps.
extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size > mostBytes) return 0;
    Steps steps(data, size);
    const Octets start = steps.longOctets();
    const OptionsInput input(start.data(), start.size());
    std::string first;
    for (const PktPtr& pkt : packets(input.bytes)) {
        const std::string log = Sequence(pkt, steps).run();
        expect(first.empty() || log == first);
        first = log;
    }
    return 0;
}
