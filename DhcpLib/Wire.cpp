#include "DhcpLib/Wire.h"

namespace DhcpLib::Wire {

void raiseNoRoom() { throw Tyk::InternalException(noRoomText); }

}  // namespace DhcpLib::Wire
