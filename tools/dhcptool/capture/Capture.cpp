#include "capture/Capture.h"

#include <pcap/pcap.h>
#include <sys/stat.h>

#include <algorithm>
#include <limits>

#include "Kcore/Types.h"
#include "common/Printable.h"

namespace DhcpTool {

namespace {

/// Throws with the file's name in the message once. Messages of libpcap contain it sometimes.
[[noreturn]] void fail(const std::string& path, std::string_view why) {
    if (why.starts_with(path + ": ")) why.remove_prefix(path.size() + 2);
    throw CaptureError(quotedText(path) + ": " + harmless(why));
}

U64 regularFileSize(std::FILE* file) {
    struct stat status {};
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return static_cast<U64>(status.st_size);
}

/// Limits seconds and microseconds, which may be any number in a file, so that their sum does not overflow.
CaptureTime timeOf(const timeval& time) {
    using Second = std::chrono::seconds;
    constexpr auto most = std::chrono::duration_cast<Second>(CaptureTime::max()) - std::chrono::days(1);
    return std::clamp(Second(time.tv_sec), -most, most) + CaptureTime(time.tv_usec);
}

std::string linkTypeName(int linkType) {
    const char* const name = pcap_datalink_val_to_description(linkType);
    return name != nullptr ? name : std::to_string(linkType);
}

}  // namespace

void CaptureReader::Close::operator()(pcap* handle) const { pcap_close(handle); }

CaptureReader::CaptureReader(const std::string& path) : path_(path) {
    char error[PCAP_ERRBUF_SIZE] = "";
    handle_.reset(pcap_open_offline(path.c_str(), error));
    if (!handle_) fail(path_, error);
    const int linkType = pcap_datalink(handle_.get());
    if (linkType != DLT_EN10MB) fail(path_, "link type is " + linkTypeName(linkType) + ", not Ethernet");
    size_ = regularFileSize(pcap_file(handle_.get()));
}

std::optional<Frame> CaptureReader::next() {
    pcap_pkthdr* header = nullptr;
    const U8* bytes = nullptr;
    const int result = pcap_next_ex(handle_.get(), &header, &bytes);
    if (result == PCAP_ERROR_BREAK) return std::nullopt;
    if (result != 1) fail(path_, pcap_geterr(handle_.get()));
    return Frame{++frames_, timeOf(header->ts), {bytes, header->caplen}, header->len};
}

U64 CaptureReader::position() const {
    const long at = std::ftell(pcap_file(handle_.get()));
    return at > 0 ? static_cast<U64>(at) : 0;
}

bool CaptureReader::reads(const std::string& path) const {
    struct stat ours {
    }, theirs{};
    return fstat(fileno(pcap_file(handle_.get())), &ours) == 0 && stat(path.c_str(), &theirs) == 0 &&
           ours.st_dev == theirs.st_dev && ours.st_ino == theirs.st_ino;
}

}  // namespace DhcpTool
