#include "Interface/EthDevPam.h"

#include <system_error>

#include "Interface/Trace.h"
#include "Interface/internal/PacketSocket.h"

namespace Interface {

namespace {

const Kcore::ModuleTypes<EthDevPam> registration{"Interface/EthDevPam"};

}  // namespace

EthDevPam::~EthDevPam() = default;
const Kcore::TypeData& EthDevPam::typeData() const { return Kcore::typeDataOf<EthDevPam>(); }

PamFrame EthDevPam::readPkt() {
    while (socket_) {
        try {
            const ReadFrame read = readFrame(socket_.get());
            if (read.pkt) ++received_;
            return {read.pkt, intf_, read.outgoing, read.checksumReady};
        } catch (const std::system_error& failure) {
            handleFailure(failure);
            if (failure.code() != std::errc::message_size) break;
        }
    }
    return {};
}

bool EthDevPam::sendPkt(const Kcore::Ptr<Kitnet::Pkt>& pkt) {
    try {
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
        Tyk::fmtrace(traceHandle(), 4, {}, "{}: packet socket on device {}", intf_, ifIndex);
    } catch (const std::system_error& failure) {
        Tyk::fmtrace(traceHandle(), 1, {}, "{}: {}", intf_, std::string_view(failure.what()));
        close(failure.what());
    }
}

void EthDevPam::close(const Kcore::String& why) {
    static_cast<void>(dropped());
    socket_ = Kcore::FileDescriptor();
    error_ = why;
    Tyk::fmtrace(traceHandle(), 4, {}, "{}: no packet socket, {}", intf_, error_);
}

void EthDevPam::handleFailure(const std::exception& failure) {
    ++errors_;
    Tyk::fmtrace(traceHandle(), 1, {}, "{}: {}", intf_, std::string_view(failure.what()));
}

}  // namespace Interface
