#include "DhcpLib/Wire.h"

#include "Tyk/Exception.h"

namespace DhcpLib::Wire {

void raiseNoRoom() { throw Tyk::InternalException(noRoomText); }

}  // namespace DhcpLib::Wire
