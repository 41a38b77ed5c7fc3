#include "view/VerboseView.h"

#include "message/TypeNames.h"
#include "view/LineView.h"
#include "view/OptionText.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::Wire::ByteView;

constexpr int columnOfOffset = 6;
constexpr std::size_t indent = 2;

class Writer {
public:
    Writer(std::string& out, const Message& message, bool coloured)
        : out_(out), message_(message), line_(out, coloured) {}

    void write(TimeText& time) {
        addStart(line_, message_, time);
        line_.field("frame", message_.arrival.pkt->bytes());
        if (message_.arrival.sentBytes > message_.arrival.pkt->bytes()) line_.field("of", message_.arrival.sentBytes);
        line_.word("bytes").word(message_.headers.srcMac).field(">", message_.headers.dstMac);
        addEndpoints(line_, message_.headers);
        addMark(line_, message_);
        out_.push_back('\n');
        if (!message_.isDhcp6()) return writeMessage4();
        for (const Layer6& layer : message_.layers) writeLayer(layer);
    }

private:
    /// The start of a line: the position, then blanks for `depth` levels.
    void begin(U32 offset, std::size_t depth) {
        const std::size_t at = out_.size();
        Kcore::appendText(out_, offset);
        const std::size_t digits = out_.size() - at;
        if (digits < columnOfOffset) out_.insert(at, columnOfOffset - digits, ' ');
        out_.append(indent * (depth + 1), ' ');
    }
    void end() { out_.push_back('\n'); }

    void writeMessage4() {
        const DhcpLib::DhcpHdr& header = message_.header;
        begin(message_.headers.messageAt, 0);
        addType(line_, message_, message_.typeName());
        addXid(line_.word("xid"), message_);
        line_.field("op", header.op().value()).field("htype", header.htype()).field("hlen", header.hlen());
        line_.field("hops", header.hops()).field("secs", header.secs()).word("flags");
        appendHex(line_.gap().text().append("0x"), DhcpLib::Wire::imageOf(header.flags()));
        if (DhcpLib::Flags(header.flags()).broadcast()) line_.word("broadcast");
        line_.field("client", header.chaddr());
        line_.field("ciaddr", header.ciaddr()).field("yiaddr", header.yiaddr());
        line_.field("next-server", header.siaddr()).field("giaddr", header.giaddr());
        end();
        writeText("server-name", message_.sname);
        writeText("file", message_.file);
        for (const Item& option : message_.options) writeOption4(option);
    }

    void writeText(std::string_view name, std::string_view text) {
        if (text.empty()) return;
        const auto* const at = reinterpret_cast<const U8*>(text.data());
        begin(static_cast<U32>(at - message_.arrival.pkt->data()), 1);
        appendQuotedText(line_.word(name).gap().text(), text);
        end();
    }

    void writeOption4(const Item& option) {
        const OptionInfo* const info = optionInfo4(option.code);
        const bool nested = info != nullptr && info->layout == Layout::relayInfo && !message_.relayInfo.empty() &&
                            message_.relayInfo.front().offset == option.dataOffset;
        writeItem(info, option, 1, !nested);
        if (!nested) return;
        for (const Item& inside : message_.relayInfo) writeItem(relayOptionInfo(inside.code), inside, 2, true);
    }

    /// "  282  12 hostname "pc""
    void writeItem(const OptionInfo* info, const Item& item, std::size_t depth, bool withValue) {
        begin(item.offset, depth);
        Kcore::appendText(out_, item.code);
        if (info != nullptr) line_.word(info->name);
        if (withValue && !item.data.empty()) appendValue(line_.gap().text(), info, item, message_);
        if (!item.isWhole()) line_.styled(Style::alarm, "[cut]");
        end();
    }

    void writeLayer(const Layer6& layer) {
        const auto depth = static_cast<std::size_t>(&layer - message_.layers.data());
        begin(layer.at, depth);
        addType(line_, message_, typeName6(static_cast<U8>(layer.type)));
        if (layer.isRelay())
            line_.field("hops", layer.hopCount).field("link", layer.linkAddr).field("peer", layer.peerAddr);
        else
            line_.field("xid", layer.xid);
        end();
        for (const Item& option : message_.optionsOf(layer)) writeOption6(option, depth + 1, Layout::relayMessage);
    }

    /// `container`: layout of what the option is in.
    void writeOption6(const Item& option, std::size_t depth, Layout container) {
        const OptionInfo* const info = optionInfo6(option.code);
        const U32 head = info != nullptr && fits(info->layout, option.length) ? headBytes(info->layout, container) : 0;
        if (head == 0) return writeItem(info, option, depth, true);
        begin(option.offset, depth);
        line_.word(option.code).word(info->name);
        // The value of the fields alone; what is nested gets lines of its own.
        Item fields = option;
        fields.data = option.data.substr(0, head);
        fields.length = static_cast<U16>(head);
        appendValue(line_.gap().text(), info, fields, message_);
        end();
        const ByteView inside(message_.arrival.pkt->data(), option.dataOffset + static_cast<U32>(option.data.size()));
        forEachItem<DhcpLib::Option6Shape>(inside, option.dataOffset + head, [&](const Item& nested) {
            writeOption6(nested, depth + 1, info->layout);
            return nested.isWhole() && nested.code != 0;
        });
    }

    /// Size of the fields in front of nested options; 0 if there are none. Addresses and prefixes are only looked for
    /// in associations, and these only in messages, which bounds the depth.
    static U32 headBytes(Layout layout, Layout container) {
        const bool inMessage = container == Layout::relayMessage;
        const bool inAssociation = container == Layout::association || container == Layout::associationTa;
        if (layout == Layout::association && inMessage) return Dhcp6Const::ianaopt_minlen;
        if (layout == Layout::associationTa && inMessage) return sizeof(U32);
        if (layout == Layout::leaseAddress && inAssociation) return Dhcp6Const::iaaddropt_minlen;
        if (layout == Layout::leasePrefix && inAssociation) return Dhcp6Const::iapfxopt_minlen;
        return 0;
    }

    std::string& out_;
    const Message& message_;
    Line line_;
};

}  // namespace

void VerboseView::append(std::string& out, const Message& message) { Writer(out, message, coloured_).write(time_); }

}  // namespace DhcpTool
