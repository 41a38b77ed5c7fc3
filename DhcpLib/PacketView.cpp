#include "DhcpLib/PacketView.h"

namespace DhcpLib {

PacketView::~PacketView() = default;

}  // namespace DhcpLib
