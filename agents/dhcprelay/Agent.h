#pragma once

#include <poll.h>

#include <array>
#include <chrono>

#include "Counters.h"
#include "DhcpLib/Constants.h"
#include "DhcpLib/DhcpSnoopingPamManager.h"
#include "Frame.h"
#include "KernelNetInfo/Addresses.h"
#include "Pace.h"
#include "Sockets.h"
#include "Steps.h"

namespace DhcpRelay {

/// The event loop of the relay agent. It follows the kernel's interfaces and addresses, receives messages from all
/// sockets in turn, passes them through the steps of their protocol, and sends the results. Uses one thread.
class Agent {
public:
    /// Throws std::system_error or std::runtime_error if the kernel refuses something; the text names it. SIGTERM,
    /// SIGINT and SIGUSR1 are blocked from then on, and SIGPIPE is ignored.
    explicit Agent(const Settings& settings);

    /// Relays messages until SIGTERM or SIGINT arrives.
    void run();

private:
    using Clock = Pace::Clock;
    using PamManagerPtr = DhcpLib::PamManager::Ptr;

    /// The sockets of one protocol.
    struct Stack {
        Protocol protocol;
        ServerSocket servers;
        PamManagerPtr clients;
        std::vector<Interface::EthDevPam::Ptr> access;  ///< one for each client link
    };
    /// A descriptor that delivers messages.
    struct Source {
        Stack* stack;
        std::optional<std::size_t> link;  ///< no value: the servers
    };

    static std::vector<Stack> openStacks(const Settings& settings, const KernelNetInfo::Status::Ptr& kni);
    void handleDevice(const Kcore::String& name);
    void requireAccess() const;
    void listSources();
    int pollTimeout() const;
    void poll();
    void handleSignals();
    std::size_t handleSource(const Source& source);
    void handleReturned(Stack& stack);
    void handleFrame(Stack& stack, std::size_t link, const Interface::PamFrame& frame);
    void handleReply(Stack& stack, Transaction& reply);
    void finish(const Transaction& t, Reason reason);
    Reason sendToServers(Stack& stack, Transaction& t);
    void printFailure(const ServerCounters& server, int error);
    Reason deliver(Stack& stack, Transaction& t);
    void print(const Transaction& t, Reason reason) const;
    void printCounters();

    Context context_;
    Counters counters_;
    Kcore::FileDescriptor signals_;
    KernelNetInfo::Status::Ptr kni_;
    KernelNetInfo::Addresses::Ptr addresses_;
    std::vector<Stack> stacks_;
    Kcore::Observers<const Kcore::String&>::Observation devices_;
    Kcore::Observers<>::Observation addressChanges_;
    Clock::time_point now_, nextStats_, nextFailure_;
    std::vector<Source> sources_;
    std::vector<pollfd> fds_;                       ///< signals, devices, addresses, then one for each source
    static constexpr std::size_t longestTurn = 32;  ///< messages of one source before the others get their turn
    std::array<Interface::PamFrame, longestTurn> frames_;
    std::array<Transaction, longestTurn> replies_;
    Pace pace_;
    Clock::duration rest_{};  ///< before the next turn
    bool ended_ = false;
};

}  // namespace DhcpRelay
