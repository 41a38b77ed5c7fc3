#include "DhcpLib/OptionParser/internal/VendorItems.h"

#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

bool isVtepWellFormed(const RawOption& item, std::string_view function, Kcore::SourceSite caller) {
    if (item.len() == sizeof(Kitnet::IpAddr) || item.len() == sizeof(Kitnet::Ip6Addr)) return true;
    Tyk::DualTrace(traceHandle(), TraceLevel::failure, {nullptr, caller}, "{} vs subopt src vtep malformed ", function);
    return false;
}

Kitnet::IpGenAddr vtepOf(const RawOption& item) {
    if (item.len() == sizeof(Kitnet::IpAddr)) return item.load<Kitnet::IpAddr>();
    return item.load<Kitnet::Ip6Addr>();
}

}  // namespace DhcpLib
