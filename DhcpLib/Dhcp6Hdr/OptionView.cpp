#include "DhcpLib/Dhcp6Hdr/OptionView.h"

namespace DhcpLib {

Dhcp6OptionView::~Dhcp6OptionView() = default;

}  // namespace DhcpLib
