#pragma once

#include <array>
#include <concepts>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "Kcore/Export.h"
#include "Kcore/Text.h"
#include "Tyk/RingTrace.h"
#include "Tyk/TraceHandle.h"

namespace Tyk {

/// The text of a trace line, with one `{}` for each argument; their number is checked when it is compiled. It knows
/// where it is written, so a function that passes texts on can name its caller's place: `{"int f(char)",
/// text.caller()}`.
template <class... Args>
class TraceText {
public:
    /// The text, and the place of the call. A wrong number of `{}` is a compile error.
    template <std::convertible_to<std::string_view> Text>
    consteval TraceText(const Text& text, Kcore::SourceSite caller = Kcore::SourceSite::here())
        : text_(text), caller_(caller) {
        if (placeholders() != sizeof...(Args)) placeholdersAndArgumentsDiffer();
    }
    /// The text with its `{}`.
    constexpr std::string_view view() const { return text_; }
    /// The place where the text is written.
    constexpr const Kcore::SourceSite& caller() const { return caller_; }

private:
    constexpr std::size_t placeholders() const {
        std::size_t count = 0;
        for (auto at = text_.find("{}"); at != text_.npos; at = text_.find("{}", at + 2)) ++count;
        return count;
    }
    static void placeholdersAndArgumentsDiffer() {}  // not constexpr: its name appears in the compiler's error message

    std::string_view text_;
    Kcore::SourceSite caller_;
};

namespace Detail {

enum class TraceTo : bool { text, textAndRing };

struct TraceArg {
    const void* value;
    void (*append)(std::string& out, const void* value);
};

template <class T>
void appendTraceArg(std::string& out, const void* value) {
    Kcore::appendText(out, *static_cast<const T*>(value));
}

[[gnu::cold]] DHCPPLATFORM_EXPORT void trace(TraceTo to, const TraceHandle& handle, int level, const TraceSite& site,
                                             std::string_view text, std::span<const TraceArg> args);
/// Passes a finished line to the sink, or prints it on stderr.
[[gnu::cold]] DHCPPLATFORM_EXPORT void emitTrace(const TraceHandle& handle, int level, const TraceSite& site,
                                                 std::string_view text);

/// How an argument is passed to the formatter. Small arguments and the site are passed by value: taking the address of
/// the caller's variable would keep it out of a register, even if the line is never wanted.
template <class T>
using TraceParam =
    std::conditional_t<std::convertible_to<const T&, std::string_view>, std::string_view,
                       std::conditional_t<std::is_trivially_copyable_v<T> && sizeof(T) <= 16, const T, const T&>>;

template <class T>
void formatterIsRegistered() {
    if constexpr (Kcore::NamedEnum<T>) {
        static const bool once = (RingTrace::formatterIs({Kcore::EnumTable<T>::name,
                                                          [](std::string& out, Kcore::U64 v) {
                                                              Kcore::appendText(out, static_cast<T>(v));
                                                          }}),
                                  true);
        static_cast<void>(once);
    }
}

template <TraceTo to, class... Params>
[[gnu::cold, gnu::noinline]] void traceWanted(const TraceHandle& handle, int level, TraceSite site,
                                              std::string_view text, Params... args) {
    if constexpr (to == TraceTo::textAndRing) (formatterIsRegistered<std::remove_cvref_t<Params>>(), ...);
    const std::array<TraceArg, sizeof...(Params)> erased{
        TraceArg{std::addressof(args), &appendTraceArg<std::remove_cvref_t<Params>>}...};
    trace(to, handle, level, site, text, erased);
}

}  // namespace Detail

/// Traces `text` with each `{}` replaced by the text form (`Kcore::appendText`) of an argument:
/// `fmtrace(handle, 2, {}, "{} left", left)`. Unwanted lines cost one comparison; without memory a line is dropped.
template <class... Args>
void fmtrace(const TraceHandle& handle, int level, TraceSite site, TraceText<std::type_identity_t<Args>...> text,
             const Args&... args) {
    if (handle.wanted(level)) [[unlikely]]
        Detail::traceWanted<Detail::TraceTo::text, Detail::TraceParam<Args>...>(handle, level, site, text.view(),
                                                                                args...);
}

/// As `fmtrace`, to the text trace and to `RingTrace`, each by its own level. The text is formatted once. Enumerations
/// among the arguments register their formatter with the ring.
template <class... Args>
void DualTrace(const TraceHandle& handle, int level, TraceSite site, TraceText<std::type_identity_t<Args>...> text,
               const Args&... args) {
    if (handle.wanted(level) || RingTrace::wanted(level)) [[unlikely]]
        Detail::traceWanted<Detail::TraceTo::textAndRing, Detail::TraceParam<Args>...>(handle, level, site, text.view(),
                                                                                       args...);
}

/// A finished trace line. The texts are valid until the call that receives it returns.
struct TraceLine {
    std::string_view handle;    ///< name of the handle
    int level;                  ///< level of the line
    std::string_view file;      ///< source file, relative to the source folder
    unsigned line;              ///< line in that file
    std::string_view function;  ///< function name
    std::string_view text;      ///< the finished text, not quoted
};

/// Receives finished trace lines.
using TraceSink = std::function<void(const TraceLine&)>;

/// Installs the receiver of every line whose level is at most its handle's; returns the previous one. With an empty
/// sink each line is printed on stderr, its text in quotes with bytes outside printable ASCII as \xNN. The sink is
/// called on the tracing thread, by several threads at once if they trace; if it throws, the line goes to stderr.
/// Returns after the last call of every replaced sink has ended, unless the caller is a sink itself.
DHCPPLATFORM_EXPORT TraceSink traceSinkIs(TraceSink sink);

/// Builds a line piece by piece and traces it when destroyed: `TraceHelper(handle, 2).stream() << "left: " << left;`.
/// If the line is not wanted when the object is made, nothing is formatted.
class DHCPPLATFORM_EXPORT TraceHelper {
public:
    /// Starts a line.
    TraceHelper(const TraceHandle& handle, int level, TraceSite site = {})
        : handle_(handle), site_(site), level_(level), wanted_(handle.wanted(level)) {}
    TraceHelper(const TraceHelper&) = delete;
    TraceHelper& operator=(const TraceHelper&) = delete;
    ~TraceHelper() {
        if (wanted_) [[unlikely]]
            Detail::emitTrace(handle_, level_, site_, text_);
    }

    /// The object itself, for `<<`.
    TraceHelper& stream() { return *this; }
    /// Appends the text form of `piece`.
    template <class T>
    TraceHelper& operator<<(const T& piece) {
        if (wanted_) [[unlikely]]
            Detail::appendTraceArg<T>(text_, std::addressof(piece));
        return *this;
    }

private:
    TraceHandle handle_;
    TraceSite site_;
    int level_;
    bool wanted_;
    std::string text_;
};

}  // namespace Tyk
