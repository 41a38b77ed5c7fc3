#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/DhcpHdr.h"

namespace {

/// Every module by name, with its types in the order of registration, and of each its attributes or members.
std::string registryDump() {
    std::map<std::string_view, std::string> modules;
    for (const auto& module : Kcore::TypeRegistry::instance().modules())
        for (const Kcore::TypeData* type : module.types) {
            std::string& out = modules[module.name];
            out.append("  ").append(type->name());
            for (const auto& attribute : type->attributes()) out.append("\n    ").append(attribute.name);
            for (const auto& member : type->members())
                out.append("\n    ").append(member.name).append(" = ").append(std::to_string(member.value));
            out.push_back('\n');
        }
    std::string all;
    for (const auto& [name, types] : modules) all.append(name).append("\n").append(types);
    return all;
}

/// Agents use these names. Change the file only if a name is meant to change.
TEST(TypeRegistry, HoldsWhatTheFileLists) {
    const std::string dump = registryDump();
    std::ostringstream expected;
    expected << std::ifstream(DHCPLIB_TEST_DATA "/registry.txt").rdbuf();
    EXPECT_EQ(dump, expected.str());
}

TEST(ConstantSets, HaveHashes) {
    using namespace DhcpLib;
    EXPECT_EQ(std::hash<Constants>{}({}), Constants().hash());
    EXPECT_TRUE(Constants().hash() != DhcpConst().hash() && DhcpConst().hash() != Dhcp6Const().hash());
}

}  // namespace
