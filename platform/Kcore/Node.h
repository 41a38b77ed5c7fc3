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

    /// Number of users.
    U32 useCount() const { return uses_.value(); }
    /// One more user. For Ptr.
    void incUse() const { uses_.increment(); }
    /// One user less; the last one destroys the object. For Ptr.
    void decUse() const {
        if (decUseImpl() == 0) lastUserGone();
    }

private:
    U32 decUseImpl() const { return uses_.decrement(); }
    void lastUserGone() const { delete this; }

    mutable Counter uses_{1};
};

}  // namespace Kcore
