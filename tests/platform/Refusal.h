#pragma once

#include <string>

#include "Kcore/Exception.h"

/// The message with which `act` is refused; empty where it is not.
template <class Act>
std::string refusalOf(Act act) {
    try {
        act();
    } catch (const Kcore::RangeException& e) {
        return e.what();
    }
    return {};
}
