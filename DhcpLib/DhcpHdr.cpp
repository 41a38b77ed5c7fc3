#include "DhcpLib/DhcpHdr.h"

namespace DhcpLib {

namespace {

const Kcore::ModuleTypes<BootpOpType, DhcpOptionType, DhcpInformationSubOptionType, DhcpVendorSpecificDataType,
                         DhcpConst, BootpOp, Flags, DhcpHdr, DhcpHdrWrapper, MagicCookie, DhcpMsgOption, DhcpMsgOptions,
                         DhcpInformationSubOption, DhcpInformationSubOptions, QuorvaSpecificSubOptionSubOpt,
                         DhcpVendorSpecificData, DhcpVendorSpecificSubOpt>
    registration{"DhcpLib/DhcpHdr"};

}  // namespace

}  // namespace DhcpLib
