#pragma once

#include <string>

#include "Kcore/Exception.h"

/// The message of the exception that `act` throws; empty if it throws none.
template <class Act>
std::string refusalOf(Act act) {
    try {
        act();
    } catch (const Kcore::RangeException& e) {
        return e.what();
    }
    return {};
}
