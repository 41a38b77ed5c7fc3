#pragma once

#include "Fields.h"

namespace DhcpBench {

/// libtins hands out option objects; what lies inside option 82 is the caller's to read, here as for the floor.
Fields<std::string> parseFrameWithTins(const U8* frame, std::size_t bytes);

/// What one of the library's readers is asked, asked of libtins: a message is made of the bytes, then searched.
enum class Question : U8 { wellFormed, msgType, relayInformation, leaseQuery, profiling };
Fields<std::string> askTins(const U8* message, std::size_t bytes, Question question);
/// The message with `information` as its option 82, or without one.
Octets rewriteWithTins(const U8* message, std::size_t bytes, Rewriting rewriting, const Octets& information);
/// A lease query by MAC address, in wire form.
Octets leaseQueryWithTins(U32 giaddr, U32 xid);

}  // namespace DhcpBench
