#pragma once

#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "Kcore/Export.h"
#include "Kcore/Hash.h"
#include "Kcore/Node.h"
#include "Kcore/Text.h"

namespace Kcore {

/// One attribute of a class: its name, and the data member or accessor that gives its value.
template <class Access>
struct Attribute {
    std::string_view name;  ///< the name of the attribute
    Access access;          ///< a pointer to a data member or accessor, or a function object
};
/// An attribute of that name. `access`: a pointer to a data member or accessor, or a function object.
template <class Access>
constexpr Attribute<Access> attribute(std::string_view name, Access access) {
    return {name, access};
}

/// The value of the attribute of `object` that `access` gives. A compiler takes longer for std::invoke.
template <class Access, class T>
constexpr decltype(auto) valueOf(const Access& access, const T& object) {
    if constexpr (std::is_member_function_pointer_v<Access>)
        return (object.*access)();
    else if constexpr (std::is_member_object_pointer_v<Access>)
        return (object.*access);
    else
        return access(object);
}

/// Marks an attribute that is computed from others.
template <class Access>
struct DerivedAccess {
    Access access;  ///< as in Attribute
    /// The value of the attribute.
    decltype(auto) operator()(const auto& object) const { return valueOf(access, object); }
};
/// Whether an attribute with this access is computed from others.
template <class Access>
inline constexpr bool isDerived = false;
/// As above, for a derived attribute.
template <class Access>
inline constexpr bool isDerived<DerivedAccess<Access>> = true;

/// An attribute that is computed from others. It is in the attribute table but not in the text form.
template <class Access>
constexpr auto derived(std::string_view name, Access access) {
    return attribute(name, DerivedAccess<Access>{access});
}
/// A constant, the same for every object. It is treated as a derived attribute.
template <class T>
constexpr auto constant(std::string_view name, T value) {
    return derived(name, [value](const auto&) { return value; });
}

/// A string attribute whose text comes from the program, not from a packet. Its value is a std::string_view; the value
/// of a byte string attribute is a `String`.
template <class T>
constexpr auto text(std::string_view name, const String& (T::*access)() const) {
    return attribute(name, [access](const T& object) { return (object.*access)().view(); });
}

namespace Detail {

/// The attribute at one place of a list.
template <std::size_t Place, class Access>
struct AttributeAt {
    Attribute<Access> attribute;
};

/// A list of attributes. A compiler takes much longer for a std::tuple of that size.
template <class Places, class... Accesses>
struct AttributeList;
template <std::size_t... Places, class... Accesses>
struct AttributeList<std::index_sequence<Places...>, Accesses...> : AttributeAt<Places, Accesses>... {
    static constexpr std::size_t size() { return sizeof...(Accesses); }
    /// Calls `visit` with all attributes.
    template <class Visit>
    constexpr decltype(auto) apply(Visit visit) const {
        return visit(static_cast<const AttributeAt<Places, Accesses>&>(*this).attribute...);
    }
};

/// The attribute at `Place` of a list.
template <std::size_t Place, class Access>
constexpr const Attribute<Access>& attributeAt(const AttributeAt<Place, Access>& entry) {
    return entry.attribute;
}

}  // namespace Detail

/// The name of a class and its attributes in order. A class states them once, in `static constexpr auto declaration()`.
/// The attribute table, equality, hashing, text encoding and decoding are derived from it.
template <class... Accesses>
struct Declaration {
    std::string_view name;  ///< the name of the class, without namespaces
    /// All attributes in order; `attributes.apply(visit)` calls `visit` with them as arguments.
    Detail::AttributeList<std::index_sequence_for<Accesses...>, Accesses...> attributes;
};
/// A declaration of those attributes. `name` is the name of the class, without namespaces.
template <class... Accesses>
constexpr Declaration<Accesses...> declare(std::string_view name, Attribute<Accesses>... attributes) {
    return {name, {{attributes}...}};
}

/// A class with a declaration.
template <class T>
concept Declared = requires {
    T::declaration().attributes;
};

/// Calls `visit(name, value)` for each attribute of `object`, in order.
template <class T, class Visit>
void forEachAttribute(const T& object, Visit visit) {
    T::declaration().attributes.apply([&](const auto&... a) { (visit(a.name, valueOf(a.access, object)), ...); });
}

/// Whether all attributes of `a` and `b` are equal.
template <class T>
bool equalAttributes(const T& a, const T& b) {
    return T::declaration().attributes.apply([&](const auto&... attribute) {
        return ((valueOf(attribute.access, a) == valueOf(attribute.access, b)) && ...);
    });
}

/// Hash of all attributes.
template <class T>
std::size_t hashAttributes(const T& object) {
    U64 h = 0;
    forEachAttribute(object, [&](std::string_view, const auto& value) { h = mixBits(h ^ hashOf(value)); });
    return static_cast<std::size_t>(h);
}

/// One row of an attribute table. `appendText` takes the address of the object; for a `Node` class, of its Node base.
struct AttributeData {
    std::string_view name;                                     ///< the name of the attribute
    void (*appendText)(std::string& out, const void* object);  ///< appends the value as text
};

/// One member of an enumeration.
struct MemberData {
    std::string_view name;  ///< the name of the member
    U64 value;              ///< its number
};

/// A type as it is seen at run time: a class with its attribute table, or an enumeration with its members.
class TypeData {
public:
    /// The type data of a class.
    TypeData(std::string_view name, std::vector<AttributeData> attributes)
        : name_(name), attributes_(std::move(attributes)) {}
    /// The type data of an enumeration.
    TypeData(std::string_view name, std::vector<MemberData> members) : name_(name), members_(std::move(members)) {}
    /// Without namespaces.
    std::string_view name() const { return name_; }
    /// In the order of declaration; empty for an enumeration.
    std::span<const AttributeData> attributes() const { return attributes_; }
    /// In the order of declaration; empty for a class.
    std::span<const MemberData> members() const { return members_; }

private:
    std::string_view name_;
    std::vector<AttributeData> attributes_;
    std::vector<MemberData> members_;
};

/// A value type without a declaration: it has a name and one text form, which is its only attribute, "value".
template <class T>
concept TextValue = SelfPrinting<T> && requires {
    { T::typeName } -> std::convertible_to<std::string_view>;
};

namespace Detail {

template <class T, std::size_t I>
void appendAttribute(std::string& out, const void* address) {
    using Seen = std::conditional_t<std::is_base_of_v<Node, T>, Node, T>;
    const T& object = static_cast<const T&>(*static_cast<const Seen*>(address));
    appendText(out, valueOf(attributeAt<I>(T::declaration().attributes).access, object));
}

template <class T, std::size_t... I>
std::vector<AttributeData> attributeRows(std::index_sequence<I...>) {
    return {AttributeData{attributeAt<I>(T::declaration().attributes).name, &appendAttribute<T, I>}...};
}

template <class E>
TypeData enumTypeData() {
    std::vector<MemberData> members;
    for (const auto& member : EnumTable<E>::members) members.push_back({member.name, static_cast<U64>(member.value)});
    return {EnumTable<E>::name, std::move(members)};
}

template <TextValue T>
TypeData textValueTypeData() {
    const std::string_view name = T::typeName;
    const auto append = [](std::string& out, const void* value) { static_cast<const T*>(value)->appendText(out); };
    return {name.substr(name.rfind(':') + 1), std::vector<AttributeData>{{"value", append}}};
}

template <class T>
TypeData classTypeData() {
    constexpr std::size_t count = decltype(T::declaration().attributes)::size();
    return {T::declaration().name, attributeRows<T>(std::make_index_sequence<count>{})};
}

}  // namespace Detail

/// The one TypeData of `T`, made from its `declaration()`, its EnumTable, or, for a TextValue, its `typeName`.
/// Never destroyed, since threads may still use it while the process exits.
/// Not constrained by `Declared`: a class may call it from a member function above its declaration().
template <class T>
const TypeData& typeDataOf() {
    if constexpr (std::is_enum_v<T>) {
        static const auto& data = *new TypeData(Detail::enumTypeData<T>());
        return data;
    } else if constexpr (TextValue<T>) {
        static const auto& data = *new TypeData(Detail::textValueTypeData<T>());
        return data;
    } else {
        static const auto& data = *new TypeData(Detail::classTypeData<T>());
        return data;
    }
}

/// The classes and enumerations of each source module, in the order in which they were registered. A library registers
/// its types while it is loaded; no other thread may use the registry meanwhile.
class DHCPPLATFORM_EXPORT TypeRegistry {
public:
    /// The types of one source module.
    struct Module {
        std::string_view name;               ///< such as "DhcpLib/DhcpHdr"
        std::vector<const TypeData*> types;  ///< in the order of registration
    };
    /// The registry of the process.
    static TypeRegistry& instance();
    /// Adds a module. For ModuleTypes.
    void moduleIs(std::string_view name, std::vector<const TypeData*> types);
    /// All modules, in the order in which they were loaded.
    const std::vector<Module>& modules() const { return modules_; }
    /// Null if no type of that name is registered.
    const TypeData* type(std::string_view name) const;

private:
    std::vector<Module> modules_;
};

/// Registers the classes and enumerations of a source module when the module is loaded.
template <class... Types>
struct ModuleTypes {
    /// Registers the types under the name `module`.
    explicit ModuleTypes(std::string_view module) {
        TypeRegistry::instance().moduleIs(module, {&typeDataOf<Types>()...});
    }
};

}  // namespace Kcore
