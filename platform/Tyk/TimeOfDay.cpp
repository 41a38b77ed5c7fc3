#include "Tyk/internal/TimeOfDay.h"

#include <cstdio>
#include <ctime>

namespace Tyk::Detail {

void appendTimeOfDay(std::string& out, std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(time - whole).count();
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    const std::size_t size = std::strftime(text, sizeof text, "%H:%M:%S", &local);
    std::snprintf(text + size, sizeof text - size, ".%06d", static_cast<int>(micros));
    out.append(text);
}

}  // namespace Tyk::Detail
