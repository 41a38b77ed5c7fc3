#pragma once

#include <pcap/pcap.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <vector>

#include "Kcore/Exception.h"
#include "Kitnet/Pkt.h"

/// The Ethernet frames of a capture file, each as a packet. Ends the program if the file cannot be read.
inline std::vector<Kcore::Ptr<Kitnet::Pkt>> framesOf(const char* path) {
    char error[PCAP_ERRBUF_SIZE];
    const std::unique_ptr<pcap_t, decltype(&pcap_close)> file(pcap_open_offline(path, error), &pcap_close);
    if (!file) std::cerr << error << '\n', std::exit(1);
    std::vector<Kcore::Ptr<Kitnet::Pkt>> frames;
    pcap_pkthdr* header = nullptr;
    const unsigned char* bytes = nullptr;
    while (pcap_next_ex(file.get(), &header, &bytes) == 1)
        frames.push_back(Kitnet::globalPktManager().newPkt({bytes, header->caplen}));
    return frames;
}

/// Calls `parse`, a parser's doParse. Drops a frame with the reserved VLAN 4095, for which parsers throw.
template <class Parse>
bool accepted(Parse parse) {
    try {
        return parse();
    } catch (const Kcore::RangeException&) {
        return false;
    }
}
