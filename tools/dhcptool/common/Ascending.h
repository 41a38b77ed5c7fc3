#pragma once

#include <algorithm>
#include <vector>

namespace DhcpTool {

/// The elements of a collection in ascending order, whatever its own.
template <class Collection>
std::vector<typename Collection::value_type> ascending(const Collection& collection) {
    std::vector<typename Collection::value_type> elements(collection.begin(), collection.end());
    std::sort(elements.begin(), elements.end());
    return elements;
}

}  // namespace DhcpTool
