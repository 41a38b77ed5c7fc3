#include "Kcore/Hash.h"

#include <random>

namespace Kcore {

U64 hashSeed() {
    static const U64 seed = [] {
        std::random_device source;
        return U64{source()} << 32 | source();
    }();
    return seed;
}

}  // namespace Kcore
