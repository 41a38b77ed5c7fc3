#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "Kcore/Node.h"

namespace Kcore {

/// Intrusive pointer to a `Node`: copying it increments the use count, destroying it decrements it.
/// There is no conversion from a raw pointer, since a `Ptr` that incremented the count of a new object would leak it:
/// `makeNode` makes an object, `adopt` takes over a count that is held, `share` increments it.
template <class T>
class Ptr {
public:
    using element_type = T;  ///< type of the object

    Ptr() = default;
    /// A null pointer.
    Ptr(std::nullptr_t) {}
    Ptr(const Ptr& other) : object_(other.object_) { hold(); }
    Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    /// One more user of the same object.
    template <class U>
    requires std::is_convertible_v<U*, T*> Ptr(const Ptr<U>& other) : object_(other.get()) { hold(); }
    /// Takes over the user count of `other`, which becomes null.
    template <class U>
    requires std::is_convertible_v<U*, T*> Ptr(Ptr<U>&& other)
    noexcept : object_(other.release()) {}
    ~Ptr() { letGo(); }

    Ptr& operator=(Ptr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    /// The object, or null.
    T* get() const { return object_; }
    /// The object. Requires: not null.
    T* operator->() const { return object_; }
    /// The object. Requires: not null.
    T& operator*() const { return *object_; }
    /// Whether the pointer is not null.
    explicit operator bool() const { return object_ != nullptr; }

    /// Takes over a count that is already held, such as the 1 of a new object. `object` may be null.
    static Ptr adopt(T* object) {
        Ptr p;
        p.object_ = object;
        return p;
    }
    /// One more owner of an object that others own: increments its count. `object` may be null.
    static Ptr share(T* object) {
        Ptr p = adopt(object);
        p.hold();
        return p;
    }
    /// Returns the object without lowering its count, which the caller owns from now on.
    T* release() { return std::exchange(object_, nullptr); }

private:
    void hold() const {
        if (object_ != nullptr) object_->incUse();
    }
    void letGo() const {
        if (object_ != nullptr) object_->decUse();
    }

    T* object_ = nullptr;
};

/// Whether both point to the same object, or are null.
template <class T, class U>
bool operator==(const Ptr<T>& a, const Ptr<U>& b) {
    return a.get() == b.get();
}
/// Whether the pointer is null.
template <class T>
bool operator==(const Ptr<T>& a, std::nullptr_t) {
    return a.get() == nullptr;
}

/// Creates a `T`; the returned pointer is its only owner.
template <class T, class... Args>
Ptr<T> makeNode(Args&&... args) {
    return Ptr<T>::adopt(new T(std::forward<Args>(args)...));
}

}  // namespace Kcore

template <class T>
struct std::hash<Kcore::Ptr<T>> {
    std::size_t operator()(const Kcore::Ptr<T>& p) const noexcept { return std::hash<T*>{}(p.get()); }
};
