// Parses mixed frames in one thread and in two, each with its own packets, configuration and parser, and prints how
// many frames a second they read together.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <numeric>
#include <thread>
#include <vector>

#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/DhcpParser.h"
#include "Frames.h"
#include "SinglePass.h"

namespace {

using namespace DhcpBench;

const Kitnet::IntfId port("Ethernet7/2");

struct Work {
    std::vector<Kcore::Ptr<Kitnet::Pkt>> packets;
    Kcore::Ptr<Bridging::Config> bridging = Kcore::makeNode<Bridging::Config>();

    Work() {
        bridging->switchIntfConfigIs(port);
        for (const Input& input : caseOf("mixed").inputs)
            packets.push_back(Kitnet::globalPktManager().newPkt(input.frame));
    }
    /// Reads until `stop` is set. Returns frames per second.
    template <class Read>
    double run(const std::atomic<bool>& stop, Read read) {
        const auto start = std::chrono::steady_clock::now();
        double frames = 0;
        for (; !stop; frames += static_cast<double>(packets.size()))
            for (const auto& pkt : packets) read(*this, pkt);
        return frames / std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
};

void parse(const Work& work, const Kcore::Ptr<Kitnet::Pkt>& pkt) {
    DhcpLib::PacketParser(work.bridging).doParse(pkt, port, false);
}

void collect(const Work&, const Kcore::Ptr<Kitnet::Pkt>& pkt) {
    constexpr unsigned optionsAt = 42 + DhcpLib::Constants::bootpHdrSize + 4;
    DhcpLib::dhcpMsgOptionsFactory(pkt, optionsAt)->option(DhcpLib::DhcpOptionType::msgType);
}

/// Shares nothing between threads, so its ratio is what the machine allows.
void readInOnePass(const Work&, const Kcore::Ptr<Kitnet::Pkt>& pkt) {
    [[maybe_unused]] const volatile bool used = parseFrameInOnePass(pkt->data(), pkt->bytes()).understood;
}

template <class Read>
double framesPerSecond(std::size_t threads, Read read) {
    constexpr std::chrono::milliseconds time(10);
    std::vector<Work> works(threads);
    std::vector<double> rates(threads);
    std::atomic<bool> stop = false;
    std::vector<std::thread> running;
    for (std::size_t i = 0; i < threads; ++i) running.emplace_back([&, i] { rates[i] = works[i].run(stop, read); });
    std::this_thread::sleep_for(time);
    stop = true;
    for (std::thread& thread : running) thread.join();
    return std::accumulate(rates.begin(), rates.end(), 0.0);
}

/// The best of many short runs, with one thread and with two in turn, since other programs disturb two threads more
/// than one.
template <class Read>
void compare(const char* name, Read read) {
    double one = 0, two = 0;
    for (int i = 0; i < 200; ++i) {
        one = std::max(one, framesPerSecond(1, read));
        two = std::max(two, framesPerSecond(2, read));
    }
    std::printf("%-24s %12.0f %12.0f %8.2f\n", name, one, two, two / one);
}

}  // namespace

int main() {
    Kcore::ThreadControl::multiThreadedIs(true);
    std::printf("%-24s %12s %12s %8s\n", "frames per second", "one thread", "two threads", "ratio");
    compare("the floor", readInOnePass);
    compare("doParse", parse);
    compare("DhcpMsgOptions, a view", collect);
}
