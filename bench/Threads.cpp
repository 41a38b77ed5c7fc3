// Parses mixed frames in one thread and in two, each with its own packets, configuration and parser, and prints how
// many frames a second they read together.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
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
    /// Frames that were read until `stop` is set.
    template <class Read>
    double run(const std::atomic<bool>& stop, Read read) {
        double frames = 0;
        for (; !stop; frames += static_cast<double>(packets.size()))
            for (const auto& pkt : packets) read(*this, pkt);
        return frames;
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
    constexpr std::chrono::milliseconds time(500);
    std::vector<Work> works(threads);
    std::vector<double> frames(threads);
    std::atomic<bool> stop = false;
    std::vector<std::thread> running;
    for (std::size_t i = 0; i < threads; ++i) running.emplace_back([&, i] { frames[i] = works[i].run(stop, read); });
    std::this_thread::sleep_for(time);
    stop = true;
    for (std::thread& thread : running) thread.join();
    double all = 0;
    for (const double one : frames) all += one;
    return all / std::chrono::duration<double>(time).count();
}

/// The best of several runs, since other programs disturb two threads more than one.
template <class Read>
double best(std::size_t threads, Read read) {
    double most = 0;
    for (int i = 0; i < 7; ++i) most = std::max(most, framesPerSecond(threads, read));
    return most;
}

template <class Read>
void compare(const char* name, Read read) {
    const double one = best(1, read), two = best(2, read);
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
