#pragma once

#include "Fields.h"

namespace DhcpBench {

/// libtins returns option objects. The caller parses the inside of option 82 by hand, as the floor does.
Fields<std::string> parseFrameWithTins(const U8* frame, std::size_t bytes);

/// The task of one of the library's readers, done with libtins: parse the message, then search it.
enum class Question : U8 { wellFormed, msgType, relayInformation, leaseQuery, profiling };
Fields<std::string> askTins(const U8* message, std::size_t bytes, Question question);
/// The message with `information` as its option 82, or without option 82.
Octets rewriteWithTins(const U8* message, std::size_t bytes, Rewriting rewriting, const Octets& information);
/// A lease query by MAC address, serialised.
Octets leaseQueryWithTins(U32 giaddr, U32 xid);

}  // namespace DhcpBench
