#pragma once

/// Exports a symbol. All other symbols of the platform library are hidden.
#define DHCPPLATFORM_EXPORT __attribute__((visibility("default")))
