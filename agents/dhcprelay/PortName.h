#pragma once

#include "Links.h"

namespace DhcpRelay {

/// The operator's text for a port, in which %i is the link, %v the VLAN and %m the link's MAC address.
class PortName {
public:
    /// Throws UsageError, naming `option`, for another letter behind a percent sign.
    PortName(const std::string& option, const std::string& text);

    std::string textOf(const Links& links, const Port& port) const;
    /// The one port whose text this is, of those that are served; unknown where there is none, or more than one since
    /// the text does not tell links or VLANs apart.
    Port portOf(const Links& links, std::string_view text) const;
    /// Whether the text is that of at least one port.
    bool isOfSomePort(const Links& links, std::string_view text) const;

private:
    /// The VLANs' number is read from `text`, or is `anyVlan` where the operator's text does not hold it.
    static constexpr unsigned anyVlan = 0;
    std::optional<unsigned> vlanIn(const Link& link, std::string_view text) const;

    struct Part {
        char kind;  ///< 'i', 'v', 'm', or 0 for text that stands as it is
        std::string text;
    };
    std::vector<Part> parts_;
};

}  // namespace DhcpRelay
