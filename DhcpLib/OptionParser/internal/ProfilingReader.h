#pragma once

#include "DhcpLib/OptionParser/internal/OptionIndex.h"

namespace DhcpLib {

/// The options that profiling reads.
struct ProfilingOptions {
    explicit ProfilingOptions(const OptionIndex& index)
        : hostName(index.last(DhcpOptionType::hostName)),
          paramReqList(index.last(DhcpOptionType::parareqOpt)),
          vendorClassId(index.last(DhcpOptionType::classIdOpt)) {}

    RawOption hostName;
    RawOption paramReqList;
    RawOption vendorClassId;
};

/// The data of an option; empty if it is absent.
inline std::string_view bytesOrNone(const RawOption& option) { return option ? option.data() : std::string_view{}; }

/// "1,3,6" for the bytes 01 03 06.
Kcore::String decimalList(std::string_view codes);

}  // namespace DhcpLib
