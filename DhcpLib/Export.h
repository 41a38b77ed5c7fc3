#pragma once

/// Marks what the library offers; everything else in it stays hidden.
#define DHCPLIB_EXPORT __attribute__((visibility("default")))
