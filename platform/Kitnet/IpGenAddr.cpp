#include "Kitnet/IpGenAddr.h"

namespace Kitnet {

IpGenAddr IpGenAddr::fromText(std::string_view text) {
    IpGenAddr value;
    if (!parse(text, &value)) refuseText(typeName, text);
    return value;
}

void IpGenAddr::appendText(std::string& out) const {
    if (isV4()) v4_.appendText(out);
    if (isV6()) v6_.appendText(out);
}

bool IpGenAddr::parse(std::string_view text, IpGenAddr* value) {
    IpAddr v4;
    Ip6Addr v6;
    if (IpAddr::parse(text, &v4))
        *value = v4;
    else if (Ip6Addr::parse(text, &v6))
        *value = v6;
    else if (text.empty())
        *value = {};
    else
        return false;
    return true;
}

}  // namespace Kitnet
