#include "OptionModel.h"

#include <gtest/gtest.h>

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// At byte 65536 the 16-bit positions of the views wrap, but not those of the raw walk. The message is placed so that
/// each of its bytes is at 65536 once. The fuzz targets compare the readers with the model at other positions.
TEST(OptionModel, ReadersAgreeWithItAcrossByte65536) {
    const Octets rich = message(
        "35 01 05 36 04 0A 00 00 01 52 2C 01 03 'abc' 02 02 'de' 97 01 'f' 98 00 05 04 0A 00 00 02 0B 04 0A 00 00 03 "
        "09 10 00 00 7E D9 0B 01 03 'ghi' 02 04 0A 00 00 04 0C 01 'j' FF 00 00");
    for (U32 i = 0; i < rich.size() && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        const U32 offset = 65536 - i;
        Octets bytes = Octets(offset, U8{0}) + rich + Octets(240, U8{0});
        // At the packet's start, where wrapped positions lead, stands the rest of the message, in capitals.
        std::copy(rich.begin() + i, rich.end(), bytes.begin());
        for (U32 at = 0; at < rich.size() - i; ++at)
            if (bytes[at] >= 'a' && bytes[at] <= 'j') bytes[at] = static_cast<U8>(bytes[at] - 32);
        const PktPtr pkt = packet(bytes);
        const U16 optionsAt = static_cast<U16>(offset + 240);
        ASSERT_EQ(Model::placesIn(*dhcpMsgOptionsFactory(pkt, optionsAt)), Model::optionsOf(bytes, optionsAt));
        ASSERT_TRUE(Model::readLeaseQuery(pkt, offset) == Model::leaseQuery(bytes, offset));
        ASSERT_EQ(Model::readProfile(pkt, offset), Model::profile(bytes, offset));
        ASSERT_TRUE(Model::readInfo(parseInfoOpt, pkt, offset) == Model::info(bytes, offset));
        ASSERT_TRUE(Model::readInfo(parseInfoOptNew, pkt, offset) == Model::infoNew(pkt, offset));
    }
}

}  // namespace
