#include "capture/CaptureWriter.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "DhcpLib/Wire.h"

namespace DhcpTool {

namespace {

constexpr U32 longestFrame = 262144;  // the limit of readers

pcap_dumper* opened(const std::string& path, u_int precision) {
    std::FILE* const file = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
    if (file == nullptr) throw OutputError(quotedText(path) + ": " + std::strerror(errno));
    const std::unique_ptr<pcap, decltype(&pcap_close)> format(
        pcap_open_dead_with_tstamp_precision(DLT_EN10MB, static_cast<int>(longestFrame), precision), pcap_close);
    pcap_dumper* const dumper = pcap_dump_fopen(format.get(), file);
    if (dumper == nullptr) throw OutputError(quotedText(path) + ": " + harmless(pcap_geterr(format.get())));
    return dumper;
}

}  // namespace

void CaptureWriter::Close::operator()(pcap_dumper* file) const { pcap_dump_close(file); }

CaptureWriter::CaptureWriter(const std::string& path, bool live, bool nanoseconds)
    : file_(opened(path, nanoseconds ? PCAP_TSTAMP_PRECISION_NANO : PCAP_TSTAMP_PRECISION_MICRO)),
      output_(live, pcap_dump_file(file_.get())),
      live_(live),
      nanoseconds_(nanoseconds) {}

void CaptureWriter::write(CaptureTime time, std::span<const U8> bytes, U32 sentBytes) {
    if (!open()) return;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    pcap_pkthdr header{};
    header.ts.tv_sec = seconds.count();
    const CaptureTime fraction = time - seconds;
    header.ts.tv_usec =
        nanoseconds_ ? fraction.count() : std::chrono::duration_cast<std::chrono::microseconds>(fraction).count();
    header.caplen = static_cast<U32>(std::min<std::size_t>(bytes.size(), longestFrame));
    header.len = sentBytes;
    pcap_dump(reinterpret_cast<U8*>(file_.get()), &header, bytes.data());
    output_.check(std::ferror(pcap_dump_file(file_.get())) == 0);
    if (live_) output_.flush();
}

void CaptureWriter::write(const Arrival& frame) {
    constexpr U32 macsBytes = 12, tagBytes = 4, tciAt = macsBytes + 2;
    const Kitnet::Pkt& pkt = *frame.pkt;
    if (!pkt.vlanTagPresent() || pkt.bytes() < macsBytes)
        return write(frame.time, {pkt.data(), pkt.bytes()}, frame.sentBytes);
    const auto whole = Kitnet::globalPktManager().newPkt({pkt.data(), pkt.bytes()});
    whole->newSharedHeadData(tagBytes);
    DhcpLib::Wire::move(*whole, 0, tagBytes, macsBytes);
    DhcpLib::Wire::store(*whole, macsBytes, pkt.vlanTagTpid());
    DhcpLib::Wire::store(*whole, tciAt, pkt.vlanTagTci());
    write(frame.time, {whole->data(), whole->bytes()}, frame.sentBytes + tagBytes);
}

void CaptureWriter::flush() { output_.flush(); }

}  // namespace DhcpTool
