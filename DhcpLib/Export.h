#pragma once

/// Exports a symbol. All other symbols of the library are hidden.
#define DHCPLIB_EXPORT __attribute__((visibility("default")))
