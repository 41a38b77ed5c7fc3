#pragma once

#include <chrono>
#include <string>

namespace Tyk::Detail {

/// "HH:MM:SS.uuuuuu", local time.
void appendTimeOfDay(std::string& out, std::chrono::system_clock::time_point time);

}  // namespace Tyk::Detail
