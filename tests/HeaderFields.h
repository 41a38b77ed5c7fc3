#pragma once

#include "DhcpLib/DhcpHdr.h"

namespace DhcpTest {

/// Writes each field of `from` through its setter.
inline void writeFields(DhcpLib::DhcpHdrWrapper& to, const DhcpLib::DhcpHdr& from) {
    to.opIs(from.op());
    to.htypeIs(from.htype());
    to.hlenIs(from.hlen());
    to.hopsIs(from.hops());
    to.xidIs(from.xidU32());
    to.secsIs(from.secsU16());
    to.flagsIs(from.flagsU16());
    to.ciaddrIs(from.ciaddr());
    to.yiaddrIs(from.yiaddr());
    to.siaddrIs(from.siaddr());
    to.giaddrIs(from.giaddr());
    to.chaddrIs(from.chaddr());
}

}  // namespace DhcpTest
