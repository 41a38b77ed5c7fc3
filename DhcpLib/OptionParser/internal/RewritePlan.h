#pragma once

#include "DhcpLib/OptionParser/internal/OptionIndex.h"
#include "DhcpLib/OptionParser/internal/RewriteArgs.h"
#include "Kcore/SourceSite.h"

namespace DhcpLib {

/// Why a rewrite stops before it changes anything: a refusal or an assertion.
struct RewriteStop {
    RelayRewriteVerdict refusal = RelayRewriteVerdict::fine;
    const char* assertion = nullptr;

    explicit operator bool() const { return refusal != RelayRewriteVerdict::fine || assertion != nullptr; }
};

/// A planned rewrite. The new option 82 replaces the bytes from `infoAt` to `keptAt`. The bytes from `keptAt` to
/// `keptEnd` follow it unchanged, then the end option.
struct RewritePlan {
    explicit RewritePlan(const RewriteArgs& args) : offset(args.offset) {}
    /// Plans to change nothing but the size of the message. `end` is the end option. `info` is the option 82 in front
    /// of it, if there is one.
    void begin(const RewriteArgs& args, const RawOption& info, const RawOption& end, bool hasMaxMsgSize);
    /// Plans to replace option 82, or to create one in front of the end option. The data goes to `infoData`.
    void replaceInfo();
    /// Plans to remove option 82. Requires: there is one.
    void removeInfo();
    /// Plans to drop the options after option 82.
    void cutBehindInfo() { keptAt = keptEnd; }

    U32 infoBytes() const { return writesInfo ? SubOptionShape::headerBytes + static_cast<U32>(infoData.size()) : 0; }
    /// Position of the end option afterwards.
    U32 newEndAt() const { return infoAt + infoBytes() + (keptEnd - keptAt); }
    /// Size of the packet afterwards.
    U32 newBytes() const { return offset + std::max(smallestMessage, newEndAt() + 1 - offset); }

    RewriteStop stop;         ///< if set, nothing is done, and the rest of the plan is not valid
    bool breaksInfo = false;  ///< the new option 82 cuts a sub-option, or lacks one that was asked for
    bool writesInfo = false;  ///< false: there is no new option 82
    bool hadInfo = false;     ///< there was an option 82 in front of the end option ...
    U32 infoEnd = 0;          ///< ... which ended here
    U32 endAt = 0;            ///< position of the end option before the rewrite
    U32 infoAt = 0, keptAt = 0, keptEnd = 0;
    U32 offset;
    U32 smallestMessage = 0;  ///< minimum size of the message
    S32 neededPadding = 0;    ///< number of bytes that the insertion requests after the end option
    Kcore::Bytes infoData;
};

inline void RewritePlan::begin(const RewriteArgs& args, const RawOption& info, const RawOption& end,
                               bool hasMaxMsgSize) {
    // RFC 1542 lets a relay expect the size of a BOOTP message; a request without option 57 gets more room for the
    // reply.
    constexpr U32 smallestRequest = 548, smallestOther = 300;
    smallestMessage = args.isRequest() && !hasMaxMsgSize ? smallestRequest : smallestOther;
    endAt = infoAt = keptAt = keptEnd = end.at();
    hadInfo = static_cast<bool>(info);
    if (!hadInfo) return;
    infoEnd = info.dataAt() + info.len();
    infoAt = keptAt = info.at();
}

inline void RewritePlan::replaceInfo() {
    writesInfo = true;
    if (hadInfo) keptAt = infoEnd;
}

inline void RewritePlan::removeInfo() { keptAt = infoEnd; }

/// Traces the entry of `function` with its arguments. The trace lines of this and the next two functions name `caller`.
[[gnu::cold]] void traceRewriteEntry(std::string_view function, const RewriteArgs& args,
                                     Kcore::SourceSite caller = Kcore::SourceSite::here());
/// Stops with a refusal, after a trace line.
RewriteStop refused(std::string_view function, RelayRewriteVerdict refusal,
                    Kcore::SourceSite caller = Kcore::SourceSite::here());
/// Traces the growth that makes room for the insertion.
[[gnu::cold]] void traceGrowth(const Kitnet::Pkt& pkt, const RewritePlan& plan,
                               Kcore::SourceSite caller = Kcore::SourceSite::here());
/// Fails the assertion that stops `plan`, if there is one. `signature` is that of the public function.
void assertNotStopped(const RewritePlan& plan, const char* signature);

/// Carries out `plan`. Throws only before the first change. The trace line names `caller`.
void apply(Kitnet::Pkt& pkt, const RewritePlan& plan, Kcore::SourceSite caller = Kcore::SourceSite::here());
/// Returns what `plan` would do.
RelayRewriteForecast describe(Wire::ByteView bytes, const RewritePlan& plan);

/// The two generations. "InPlace" (preparePacket) edits the existing sub-options; "Rebuild" (preparePacketNew) builds a
/// new option 82. A null packet is refused like an empty one.
bool rewriteInPlace(Kitnet::Pkt* pkt, const RewriteArgs& args);
bool rewriteByRebuild(Kitnet::Pkt* pkt, const RewriteArgs& args);
RelayRewriteForecast checkInPlace(Wire::ByteView bytes, const RewriteArgs& args);
RelayRewriteForecast checkRebuild(Wire::ByteView bytes, const RewriteArgs& args);

}  // namespace DhcpLib
