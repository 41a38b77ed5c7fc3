#pragma once

#include <functional>
#include <new>

/// A program that links FailingAllocations.cpp can make an allocation fail.
namespace DhcpTest {

/// Number of blocks that operator new has given out and operator delete has not taken back.
long liveBlocks();

/// Calls `act` with the `n`-th allocation from now on, counted from 0, failing. What happened:
enum class Ending {
    complete,  ///< there were at most `n` allocations
    threw,     ///< std::bad_alloc arrived
    wentOn,    ///< `act` returned although an allocation failed
};
Ending actWithFailure(int n, const std::function<void()>& act);

/// Calls `act` with the first, second, ... allocation failing, and `unchanged` after each exception, until `act`
/// returns. Returns the number of failures.
int failEachAllocation(const std::function<void()>& act, const std::function<void()>& unchanged);

}  // namespace DhcpTest
