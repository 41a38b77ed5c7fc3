#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

[[gnu::init_priority(101)]] const Tyk::TraceHandle libraryTrace("DhcpLib", false);

}  // namespace DhcpLib
