#pragma once

#include <poll.h>

#include <chrono>

#include "Counters.h"
#include "DhcpLib/Constants.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "Frame.h"
#include "KernelNetInfo/Addresses.h"
#include "Sockets.h"
#include "Steps.h"

namespace DhcpRelay {

/// The relay agent at work: follows the kernel's interfaces and addresses, takes messages in from all sides in turn,
/// and sends on what the steps let through. One thread, one loop.
class Agent {
public:
    /// Throws std::system_error or std::runtime_error naming what the kernel refuses. SIGTERM, SIGINT and SIGUSR1 are
    /// blocked from then on.
    explicit Agent(const Settings& settings);

    /// Until SIGTERM or SIGINT.
    void run();

private:
    using Clock = std::chrono::steady_clock;
    using PamManagerPtr = DhcpLib::PamManager::Ptr;

    /// What a protocol has of its own.
    struct Stack {
        Protocol protocol;
        ServerSocket servers;
        PamManagerPtr clients;
        std::vector<Interface::EthDevPam::Ptr> access;  ///< of each client link
    };
    /// A descriptor that messages come from, and how many of them are taken in its turn: more while there are more, so
    /// that under a load one call of poll serves many, and one at a time otherwise, so that none is looked for in vain.
    struct Source {
        Stack* stack;
        std::optional<std::size_t> link;  ///< nothing: the servers
        int turn = 1;
    };
    /// Requests that a link may send at present: refilled with time up to a second's worth.
    struct Budget {
        double requests;
        Clock::time_point since;
    };

    void handleDevice(const Kcore::String& name);
    void requireAccess() const;
    void listSources();
    int pollTimeout() const;
    void poll();
    void handleSignals();
    void handleSource(Source& source);
    bool handleFrame(Stack& stack, std::size_t link);
    bool handleDatagram(Stack& stack);
    void finish(const Transaction& t, Reason reason);
    Reason sendToServers(Stack& stack, Transaction& t);
    Reason deliver(Stack& stack, Transaction& t);
    bool spend(std::size_t link);
    void tell(const Transaction& t, Reason reason) const;
    void printCounters();

    Context context_;
    Counters counters_;
    std::vector<Budget> budgets_;
    Kcore::FileDescriptor signals_;
    KernelNetInfo::Status::Ptr kni_;
    KernelNetInfo::Addresses::Ptr addresses_;
    std::vector<Stack> stacks_;
    Kcore::Observers<const Kcore::String&>::Observation devices_;
    Kcore::Observers<>::Observation addressChanges_;
    Clock::time_point now_, nextStats_;
    std::vector<Source> sources_;
    std::vector<pollfd> fds_;  ///< signals, devices and addresses, then those of the sources
    bool isBusy_ = false;
    bool ended_ = false;
};

}  // namespace DhcpRelay
