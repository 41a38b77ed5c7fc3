#pragma once

#include "Kcore/Counter.h"
#include "Kcore/Export.h"

namespace Kcore {

class TypeData;

/// Base of every reference-counted object. Starts with a use count of 1, which the first `Ptr` takes over
/// (`makeNode`); destroyed when the last `Ptr` lets go.
class DHCPPLATFORM_EXPORT Node {
public:
    Node() = default;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    virtual ~Node();

    /// The attribute table of the object's class (`Kcore/TypeData.h`).
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
