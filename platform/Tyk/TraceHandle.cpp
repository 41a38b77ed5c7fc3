#include "Tyk/TraceHandle.h"

#include <charconv>
#include <forward_list>
#include <mutex>

#include "Kcore/internal/Environment.h"

namespace Tyk {

namespace {

int levelOfEnvironment() {
    const char* text = Kcore::environmentValue("DHCPLIB_TRACE");
    if (text == nullptr) return 0;
    const std::string_view digits(text);
    int level = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), level);
    return error == std::errc{} && end == digits.end() && level > 0 ? level : 0;
}

}  // namespace

TraceHandle::TraceHandle(std::string_view name, bool timeStamped)
    : facility_(&facilityNamed(name)), timeStamped_(timeStamped) {}

TraceHandle::Facility& TraceHandle::facilityNamed(std::string_view name) {
    static std::mutex mutex;
    static auto& all =
        *new std::forward_list<Facility>;  // never destroyed, since destructors of static objects trace, too
    const std::lock_guard lock(mutex);
    for (Facility& facility : all)
        if (facility.name == name) return facility;
    return all.emplace_front(name, levelOfEnvironment());
}

}  // namespace Tyk
