#include "capture/Capture.h"

#include <pcap/pcap.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <system_error>

#include "capture/StopSignal.h"
#include "common/Printable.h"

namespace DhcpTool {

namespace {

U64 regularFileSize(int fd) {
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return static_cast<U64>(status.st_size);
}

/// Limits the seconds, which may be any number in a file, so that the sum does not overflow. libpcap delivers
/// nanoseconds in the place of microseconds.
CaptureTime timeOf(const timeval& time) {
    using Second = std::chrono::seconds;
    constexpr auto most = std::chrono::duration_cast<Second>(CaptureTime::max()) - std::chrono::days(1);
    constexpr CaptureTime::rep mostFraction = 1'000'000'000;
    const auto fraction = std::clamp(CaptureTime::rep{time.tv_usec}, -mostFraction, mostFraction);
    return std::clamp(Second(time.tv_sec), -most, most) + CaptureTime(fraction);
}

std::string linkTypeName(int linkType) {
    const char* const name = pcap_datalink_val_to_description(linkType);
    return name != nullptr ? name : std::to_string(linkType);
}

/// Reads the format of a capture that is not compressed from its first four bytes.
bool mayHaveNanoseconds(std::FILE* stream) {
    constexpr std::array<U8, 4> inNanoseconds{0xa1, 0xb2, 0x3c, 0x4d}, nextGeneration{0x0a, 0x0d, 0x0d, 0x0a};
    std::array<U8, 4> magic{};
    const std::size_t count = std::fread(magic.data(), 1, magic.size(), stream);
    for (std::size_t i = count; i > 0; --i) std::ungetc(magic[i - 1], stream);
    return magic == nextGeneration || magic == inNanoseconds ||
           std::equal(magic.rbegin(), magic.rend(), inNanoseconds.begin());
}

}  // namespace

void CaptureReader::Close::operator()(pcap* handle) const { pcap_close(handle); }

CaptureReader::CaptureReader(const std::string& path, const StopSignal* stop) : path_(path), stop_(stop) {
    try {
        stream_ = std::make_unique<ByteStream>(path, stop);
        open();
    } catch (const std::system_error& failure) {
        fail(failure.code().message());
    }
    size_ = regularFileSize(stream_->raw().fd());
}

void CaptureReader::open() {
    char error[PCAP_ERRBUF_SIZE] = "";
    std::FILE* const stream = stream_->open();
    nanoseconds_ = mayHaveNanoseconds(stream);
    handle_.reset(pcap_fopen_offline_with_tstamp_precision(stream, PCAP_TSTAMP_PRECISION_NANO, error));
    if (!handle_) {
        std::fclose(stream);
        if (stopped()) return;  // before the file's header arrived: next() returns no frame
        fail(error);
    }
    const int linkType = pcap_datalink(handle_.get());
    linkLayer_ = LinkLayer::of(linkType);
    if (!linkLayer_) fail("link type " + linkTypeName(linkType) + " is not supported");
}

/// Throws with the file's name in the message.
void CaptureReader::fail(std::string_view why) const {
    if (stream_ && !stream_->error().empty()) why = stream_->error();
    throw CaptureError(quotedText(path_) + ": " + harmless(why));
}

bool CaptureReader::stopped() const { return stop_ != nullptr && stop_->signalled(); }

std::optional<Frame> CaptureReader::next() {
    if (stopped()) return std::nullopt;
    pcap_pkthdr* header = nullptr;
    const U8* bytes = nullptr;
    const int result = pcap_next_ex(handle_.get(), &header, &bytes);
    if (result != 1 && stopped()) return std::nullopt;
    if (result != 1 && !stream_->error().empty()) fail(stream_->error());
    if (result == PCAP_ERROR_BREAK) return std::nullopt;
    if (result != 1) fail(pcap_geterr(handle_.get()));
    return Frame{linkLayer_->ethernet({bytes, header->caplen}, header->len), ++frames_, timeOf(header->ts)};
}

bool CaptureReader::reads(const std::string& path) const {
    struct stat ours {
    }, theirs{};
    return ::fstat(stream_->raw().fd(), &ours) == 0 && ::stat(path.c_str(), &theirs) == 0 &&
           ours.st_dev == theirs.st_dev && ours.st_ino == theirs.st_ino;
}

}  // namespace DhcpTool
