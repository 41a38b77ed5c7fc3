#pragma once

#include "Kcore/Counter.h"
#include "Kcore/Export.h"

namespace Kcore {

class TypeData;

/// Base of every reference-counted object. The use count starts at 1 and belongs to the first `Ptr` (see `makeNode`).
/// The object is destroyed when the last `Ptr` is.
class DHCPPLATFORM_EXPORT Node {
public:
    Node() = default;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    virtual ~Node();

    /// The attribute table of the object's class (see `Kcore/TypeData.h`).
    virtual const TypeData& typeData() const = 0;

    U32 useCount() const { return uses_.value(); }
    void incUse() const { uses_.increment(); }
    void decUse() const {
        if (decUseImpl() == 0) lastUserGone();
    }

private:
    U32 decUseImpl() const { return uses_.decrement(); }
    void lastUserGone() const { delete this; }

    mutable Counter uses_{1};
};

}  // namespace Kcore
