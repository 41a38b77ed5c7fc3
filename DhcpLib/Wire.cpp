#include "DhcpLib/Wire.h"

namespace DhcpLib::Wire {

void throwNoRoom() { throw Tyk::InternalException(noRoomText); }

}  // namespace DhcpLib::Wire
