#pragma once

#include "DhcpLib/Constants.h"

namespace DhcpLib {

/// Offsets and sizes of the code/length/data layout that options, sub-options and data items share (RFC 2132).
class DhcpConst : public ConstantSet<DhcpConst> {
public:
    using ConstantSet::ConstantSet;

    static constexpr U8 opttype_offset = 0;  ///< offset of the code
    static constexpr U8 opttype_size = 1;    ///< size of the code in bytes
    static constexpr U8 optlen_offset = 1;   ///< offset of the length
    static constexpr U8 optlen_size = 1;     ///< size of the length in bytes
    static constexpr U8 optdata_offset = 2;  ///< offset of the data
    /// Size of the enterprise number that opens an enterprise block; the block's length byte follows at this offset.
    static constexpr U8 entno_offset = 4;

    static constexpr auto declaration() {
        using Kcore::constant;
        return Kcore::declare("DhcpConst", constant("opttype_offset", opttype_offset),
                              constant("opttype_size", opttype_size), constant("optlen_offset", optlen_offset),
                              constant("optlen_size", optlen_size), constant("optdata_offset", optdata_offset),
                              constant("entno_offset", entno_offset));
    }
};

}  // namespace DhcpLib
