#pragma once

#include <gtest/gtest.h>

namespace DhcpTest {

/// Whether QEMU's user mode runs the tests. There, a program cannot start itself, and packet sockets lack options.
#ifdef DHCPLIB_EMULATED
inline constexpr bool emulated = true;
#else
inline constexpr bool emulated = false;
#endif

}  // namespace DhcpTest
