#include "ConfigFile.h"

#include <nlohmann/json.hpp>
#include <set>

#include "Options.h"

namespace DhcpRelay {

namespace {

using Json = nlohmann::json;

/// Reads the object in the file. Refuses a name that occurs twice, because the parser would silently use the last one.
Json objectIn(std::istream& in) {
    std::set<std::string> names;
    const auto refuseSecond = [&](int depth, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::key && depth == 1 && !names.insert(parsed.get<std::string>()).second)
            throw UsageError("configuration file: " + parsed.dump() + " occurs twice");
        return true;
    };
    try {
        Json object = Json::parse(in, refuseSecond, true, true);
        if (!object.is_object()) throw UsageError("configuration file: not a JSON object");
        return object;
    } catch (const Json::exception& error) {
        throw UsageError(std::string("configuration file: ") + error.what());
    }
}

std::string textOf(const std::string& name, const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_boolean() || value.is_number()) return value.dump();
    throw UsageError("configuration file: " + name + " is not a string, a number, true or false");
}

}  // namespace

std::vector<CLI::ConfigItem> JsonConfig::from_config(std::istream& in) const {
    std::vector<CLI::ConfigItem> read;
    const Json object = objectIn(in);
    for (const auto& [name, value] : object.items()) {
        CLI::ConfigItem item;
        item.name = name;
        if (value.is_array())
            for (const Json& element : value) item.inputs.push_back(textOf(name, element));
        else
            item.inputs.push_back(textOf(name, value));
        if (!item.inputs.empty()) read.push_back(std::move(item));
    }
    return read;
}

}  // namespace DhcpRelay
