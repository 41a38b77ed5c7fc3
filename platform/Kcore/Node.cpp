#include "Kcore/Node.h"

namespace Kcore {

Node::~Node() = default;

}  // namespace Kcore
