#include "DhcpLib/OptionParser.h"

#include "Kcore/TypeData.h"

namespace DhcpLib {

namespace {

const Kcore::ModuleTypes<AreaState, DhcpSingleOption, DhcpSingleOptionWithCode, DhcpOptions,
                         DhcpVendorSpecificEntOption, InfoRemoval, RelayGeneration, RelayRewriteVerdict,
                         RelayRewriteForecast>
    registration{"DhcpLib/OptionParser"};

}  // namespace

}  // namespace DhcpLib
