#pragma once

#include "Links.h"

namespace DhcpRelay {

/// Format of a port's name. %i stands for the link, %v for the VLAN and %m for the link's MAC address.
class PortName {
public:
    /// Throws UsageError, which names `option`, for any other character after a percent sign.
    PortName(const std::string& option, const std::string& text);

    std::string textOf(const Links& links, const Port& port) const;
    /// The served port with this name. Unknown if no port or several ports have it: a format without %i or %v gives
    /// several ports the same name.
    Port portOf(const Links& links, std::string_view text) const;
    /// Whether at least one port has this name.
    bool isOfSomePort(const Links& links, std::string_view text) const;

private:
    /// The VLAN number in `text`, which is a name of a port of `link`. `anyVlan` if the format has no %v; no value if
    /// `text` is no such name.
    static constexpr unsigned anyVlan = 0;
    std::optional<unsigned> vlanIn(const Link& link, std::string_view text) const;

    struct Part {
        char kind;  ///< 'i', 'v', 'm', or 0 for literal text
        std::string text;
    };
    std::vector<Part> parts_;
};

}  // namespace DhcpRelay
