#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "Kcore/Export.h"
#include "Kcore/Hash.h"
#include "Kcore/Node.h"
#include "Kcore/Text.h"

namespace Kcore {

/// One attribute of a class: its name, and the data member or accessor for its value.
template <class Access>
struct Attribute {
    std::string_view name;
    Access access;
};
template <class Access>
constexpr Attribute<Access> attribute(std::string_view name, Access access) {
    return {name, access};
}

/// Marks the accessor of a derived attribute.
template <class Access>
struct DerivedAccess {
    Access access;
    decltype(auto) operator()(const auto& object) const { return std::invoke(access, object); }
};
template <class Access>
inline constexpr bool isDerived = false;
template <class Access>
inline constexpr bool isDerived<DerivedAccess<Access>> = true;

/// An attribute whose value is computed from others. It is in the attribute table but not in the text form.
template <class Access>
constexpr auto derived(std::string_view name, Access access) {
    return attribute(name, DerivedAccess<Access>{access});
}
/// A constant attribute, the same for every object. Treated like a derived one.
template <class T>
constexpr auto constant(std::string_view name, T value) {
    return derived(name, [value](const auto&) { return value; });
}

/// An attribute whose text the program itself makes, as a std::string_view. Byte strings from packets are `String`.
template <class T>
constexpr auto text(std::string_view name, const String& (T::*access)() const) {
    return attribute(name, [access](const T& object) { return (object.*access)().view(); });
}

/// The name and the attributes of a class, in order. A class returns it from `static constexpr auto declaration()`. The
/// attribute table, equality, hashing, text encoding and decoding are derived from it.
template <class... Accesses>
struct Declaration {
    std::string_view name;
    std::tuple<Attribute<Accesses>...> attributes;
};
template <class... Accesses>
constexpr Declaration<Accesses...> declare(std::string_view name, Attribute<Accesses>... attributes) {
    return {name, {attributes...}};
}

template <class T>
concept Declared = requires {
    T::declaration().attributes;
};

/// Calls `visit(name, value)` for each attribute of `object`, in order.
template <class T, class Visit>
void forEachAttribute(const T& object, Visit visit) {
    std::apply([&](const auto&... a) { (visit(a.name, std::invoke(a.access, object)), ...); },
               T::declaration().attributes);
}

template <class T>
bool equalAttributes(const T& a, const T& b) {
    return std::apply(
        [&](const auto&... attribute) {
            return ((std::invoke(attribute.access, a) == std::invoke(attribute.access, b)) && ...);
        },
        T::declaration().attributes);
}

template <class T>
std::size_t hashAttributes(const T& object) {
    U64 h = 0;
    forEachAttribute(object, [&](std::string_view, const auto& value) { h = mixBits(h ^ hashOf(value)); });
    return h;
}

/// One row of an attribute table. `appendText` takes the address of the object; for a `Node` class, of its Node base.
struct AttributeData {
    std::string_view name;
    void (*appendText)(std::string& out, const void* object);
};

/// The attribute table of a class at run time.
class TypeData {
public:
    TypeData(std::string_view name, std::vector<AttributeData> attributes)
        : name_(name), attributes_(std::move(attributes)) {}
    std::string_view name() const { return name_; }
    std::span<const AttributeData> attributes() const { return attributes_; }

private:
    std::string_view name_;
    std::vector<AttributeData> attributes_;
};

namespace Detail {

template <class T, std::size_t I>
void appendAttribute(std::string& out, const void* address) {
    using Seen = std::conditional_t<std::is_base_of_v<Node, T>, Node, T>;
    const T& object = static_cast<const T&>(*static_cast<const Seen*>(address));
    appendText(out, std::invoke(std::get<I>(T::declaration().attributes).access, object));
}

template <class T, std::size_t... I>
std::vector<AttributeData> attributeRows(std::index_sequence<I...>) {
    return {AttributeData{std::get<I>(T::declaration().attributes).name, &appendAttribute<T, I>}...};
}

}  // namespace Detail

/// Not constrained by `Declared`, because a class may call it above its declaration().
template <class T>
const TypeData& typeDataOf() {
    constexpr std::size_t count = std::tuple_size_v<decltype(T::declaration().attributes)>;
    static const TypeData data{T::declaration().name, Detail::attributeRows<T>(std::make_index_sequence<count>{})};
    return data;
}

/// All registered types by source module, in the order of registration.
class DHCPPLATFORM_EXPORT TypeRegistry {
public:
    struct Module {
        std::string_view name;
        std::vector<const TypeData*> types;
    };
    static TypeRegistry& instance();
    void moduleIs(std::string_view name, std::vector<const TypeData*> types);
    const std::vector<Module>& modules() const { return modules_; }
    /// Null if no type of this name is registered.
    const TypeData* type(std::string_view name) const;

private:
    std::vector<Module> modules_;
};

/// Registers the classes of a source module when the module is loaded.
template <class... Types>
struct ModuleTypes {
    explicit ModuleTypes(std::string_view module) {
        TypeRegistry::instance().moduleIs(module, {&typeDataOf<Types>()...});
    }
};

}  // namespace Kcore
