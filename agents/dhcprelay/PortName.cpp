#include "PortName.h"

#include <charconv>

#include "Options.h"

namespace DhcpRelay {

PortName::PortName(const std::string& option, const std::string& text) {
    std::string literal;
    const auto flush = [&] {
        if (!literal.empty()) parts_.push_back({0, std::exchange(literal, {})});
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            literal += text[i];
            continue;
        }
        const char kind = i + 1 < text.size() ? text[++i] : '\0';
        if (kind == '%') {
            literal += '%';
            continue;
        }
        if (kind != 'i' && kind != 'v' && kind != 'm')
            throw UsageError("--" + option + " " + text + ": after % only i, v, m and % are allowed");
        flush();
        parts_.push_back({kind, {}});
    }
    flush();
}

std::string PortName::textOf(const Links& links, const Port& port) const {
    std::string text;
    for (const Part& part : parts_) {
        if (part.kind == 'i')
            text += links.of(port).name();
        else if (part.kind == 'v')
            text += std::to_string(port.vlan);
        else if (part.kind == 'm')
            Kcore::appendText(text, links.of(port).device.macAddr());
        else
            text += part.text;
    }
    return text;
}

std::optional<unsigned> PortName::vlanIn(const Link& link, std::string_view text) const {
    unsigned vlan = anyVlan;
    const auto take = [&](std::string_view expected) {
        const bool matches = text.starts_with(expected);
        if (matches) text.remove_prefix(expected.size());
        return matches;
    };
    for (const Part& part : parts_) {
        if (part.kind == 'v') {
            unsigned number = 0;
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
            if (error != std::errc() || number == 0 || number > 4094 || (vlan != anyVlan && vlan != number) ||
                text.front() == '0')
                return std::nullopt;
            vlan = number;
            text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        } else if (part.kind == 'i' ? !take(link.name())
                                    : !take(part.kind == 'm' ? Kcore::textOf(link.device.macAddr()) : part.text)) {
            return std::nullopt;
        }
    }
    return text.empty() ? std::optional(vlan) : std::nullopt;
}

Port PortName::portOf(const Links& links, std::string_view text) const {
    Port found;
    for (std::size_t i = 0; i < links.clients().size(); ++i) {
        const Link& link = links.clients()[i];
        const std::optional<unsigned> vlan = vlanIn(link, text);
        if (!vlan) continue;
        if (found.isKnown()) return {};
        // A text without the VLAN identifies the port only if the link has a single VLAN.
        if (*vlan == anyVlan && link.config.taggedVlans.any()) return {};
        const Port port = *vlan == anyVlan ? links.nativePort(i) : links.portOf(i, static_cast<U16>(*vlan));
        if (links.serves(port)) found = port;
    }
    return found;
}

bool PortName::isOfSomePort(const Links& links, std::string_view text) const {
    for (const Link& link : links.clients())
        if (vlanIn(link, text)) return true;
    return false;
}

}  // namespace DhcpRelay
