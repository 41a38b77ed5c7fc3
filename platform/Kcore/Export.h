#pragma once

/// Marks what the platform library offers; everything else in it stays hidden.
#define DHCPPLATFORM_EXPORT __attribute__((visibility("default")))
