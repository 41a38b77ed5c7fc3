#include "Interface/EthDevPam.h"

#include <memory>

#include "Interface/Trace.h"
#include "Interface/internal/PacketSocket.h"

namespace Interface {

namespace {

const Kcore::ModuleTypes<EthDevPam> registration{"Interface/EthDevPam"};

/// Created when a frame is read for the first time: threads that read none do without its memory.
FrameBatch& batchOfThread() {
    thread_local std::unique_ptr<FrameBatch> batch;
    if (!batch) batch = std::make_unique<FrameBatch>();
    return *batch;
}

}  // namespace

EthDevPam::~EthDevPam() = default;
const Kcore::TypeData& EthDevPam::typeData() const { return Kcore::typeDataOf<EthDevPam>(); }

PamFrame EthDevPam::readPkt() {
    PamFrame frame;
    readPkts({&frame, 1});
    return frame;
}

std::size_t EthDevPam::readPkts(std::span<PamFrame> frames) {
    std::size_t taken = 0;
    try {
        while (socket_ && taken == 0) {
            FrameBatch& batch = batchOfThread();
            const std::size_t waiting = batch.read(socket_.get(), frames.size());
            if (waiting == 0) break;
            for (std::size_t i = 0; i < waiting; ++i) {
                try {
                    const ReadFrame read = batch.frame(i);
                    frames[taken] = {read.pkt, intf_, read.outgoing, read.checksumReady, PamFrame::Time(read.time)};
                    ++taken;
                } catch (const std::exception& failure) {  // the other frames of the batch are not lost with it
                    handleFailure(failure);
                }
            }
        }
    } catch (const std::system_error& failure) {
        handleFailure(failure);
    }
    received_ += taken;
    return taken;
}

bool EthDevPam::sendPkt(const Kcore::Ptr<Kitnet::Pkt>& pkt) {
    try {
        if (!pkt) throw std::runtime_error("no packet to send");
        if (!socket_) throw std::runtime_error(error_.str());
        sendFrame(socket_.get(), *pkt);
        ++sent_;
        return true;
    } catch (const std::runtime_error& failure) {
        handleFailure(failure);
        return false;
    }
}

U64 EthDevPam::dropped() const {
    if (socket_) dropped_ += takeDropCount(socket_.get());
    return dropped_;
}

void EthDevPam::open(U32 ifIndex, const PacketSocketSettings& settings) {
    try {
        socket_ = openPacketSocket(ifIndex, settings);
        ifIndex_ = ifIndex;
        error_ = {};
        errorCode_ = {};
        Tyk::fmtrace(traceHandle(), 4, {}, "{}: packet socket on device {}", intf_, ifIndex);
    } catch (const std::system_error& failure) {
        Tyk::fmtrace(traceHandle(), 1, {}, "{}: {}", intf_, std::string_view(failure.what()));
        close(failure.code(), failure.what());
    }
}

void EthDevPam::close(std::error_code code, const Kcore::String& why) {
    static_cast<void>(dropped());
    socket_ = Kcore::FileDescriptor();
    error_ = why;
    errorCode_ = code;
    Tyk::fmtrace(traceHandle(), 4, {}, "{}: no packet socket, {}", intf_, error_);
}

void EthDevPam::handleFailure(const std::exception& failure) {
    ++errors_;
    Tyk::fmtrace(traceHandle(), 1, {}, "{}: {}", intf_, std::string_view(failure.what()));
}

}  // namespace Interface
