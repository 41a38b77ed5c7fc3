#include "Kcore/TypeData.h"

namespace Kcore {

TypeRegistry& TypeRegistry::instance() {
    static auto& registry = *new TypeRegistry;  // never destroyed, as the types
    return registry;
}

void TypeRegistry::moduleIs(std::string_view name, std::vector<const TypeData*> types) {
    for (Module& module : modules_) {
        if (module.name != name) continue;
        module.types.insert(module.types.end(), types.begin(), types.end());
        return;
    }
    modules_.push_back({name, std::move(types)});
}

const TypeData* TypeRegistry::type(std::string_view name) const {
    for (const Module& module : modules_)
        for (const TypeData* type : module.types)
            if (type->name() == name) return type;
    return nullptr;
}

}  // namespace Kcore
