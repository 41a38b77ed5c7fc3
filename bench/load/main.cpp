// Load for a relay agent: many DHCP clients on one link, and a server that answers at once.

#include <poll.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <unordered_map>

#include "Clients.h"
#include "Server.h"

namespace {

using namespace DhcpBench;
using Clock = std::chrono::steady_clock;

struct Load {
    std::string interface;
    double rate = 0, seconds = 1;
    std::size_t window = 32;
    U32 first = 0;
    bool v6 = false, flood = false;
};

/// Starts transactions at a fixed rate, or a new one whenever one has ended, and completes each up to the lease.
class Generator {
public:
    Generator(Clients& clients, const Load& load) : clients_(clients), load_(load), next_(load.first) {}

    void run() {
        const auto end = begin_ + std::chrono::duration<double>(load_.seconds);
        for (Clock::time_point now; (now = Clock::now()) < end;) {
            startDue(now);
            step(now);
        }
        elapsed_ = Clock::now() - begin_;
        while (!open_.empty()) step(Clock::now());
    }

    void report() const {
        std::cout << "started " << started_ << " completed " << completed_ << " lost " << lost_ << " stray " << stray_
                  << " seconds " << elapsed_.count() << std::endl;
    }

private:
    void startDue(Clock::time_point now) {
        const std::chrono::duration<double> run = now - begin_;
        const auto due = static_cast<std::size_t>(run.count() * load_.rate);
        while (load_.rate > 0 ? started_ < due : open_.size() < load_.window) {
            clients_.socket().send(clients_.discover(next_), clients_.agents());
            if (!load_.flood) open_.emplace(next_, now);
            ++next_;
            ++started_;
        }
    }

    /// Sends the queued messages, then waits for replies, at most 0.2 ms.
    void step(Clock::time_point now) {
        constexpr timespec moment{0, 200'000};
        clients_.socket().flush();
        pollfd readable{clients_.socket().fd(), static_cast<short>(load_.flood ? 0 : POLLIN), 0};
        if (ppoll(&readable, 1, &moment, nullptr) > 0)
            while (clients_.socket().receive([this](ByteView bytes, const Peer&) { take(bytes); }) ==
                   BatchSocket::batch)
                ;
        if (now >= nextCheck_) forgetOld(now);
    }

    void take(ByteView bytes) {
        auto answer = clients_.answerTo(bytes);
        if (!answer) return;
        const auto transaction = open_.find(answer->number);
        if (transaction == open_.end()) {
            ++stray_;
        } else if (answer->request) {
            clients_.socket().send(std::move(*answer->request), clients_.agents());
        } else {
            open_.erase(transaction);
            ++completed_;
        }
    }

    void forgetOld(Clock::time_point now) {
        constexpr auto patience = std::chrono::seconds(2);
        nextCheck_ = now + std::chrono::milliseconds(100);
        lost_ += std::erase_if(open_, [&](const auto& transaction) { return now - transaction.second > patience; });
    }

    Clients& clients_;
    const Load& load_;
    const Clock::time_point begin_ = Clock::now();
    Clock::time_point nextCheck_ = begin_;
    std::chrono::duration<double> elapsed_{};
    U32 next_;
    std::unordered_map<U32, Clock::time_point> open_;
    std::size_t started_ = 0, completed_ = 0, lost_ = 0, stray_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Load for a DHCP relay agent"};
    app.require_subcommand(1);
    Load load;
    CLI::App* clients =
        app.add_subcommand("clients", "Run the clients of one link and print how many transactions completed");
    clients->add_option("interface", load.interface, "The clients' interface")->required();
    clients->add_flag("-6", load.v6, "DHCPv6 instead of DHCPv4");
    clients->add_option("--rate", load.rate, "Transactions to start per second");
    clients->add_option("--window", load.window, "Number of open transactions if no rate is given")
        ->capture_default_str();
    clients->add_option("--seconds", load.seconds, "Time during which transactions are started")->capture_default_str();
    clients->add_option("--first", load.first, "Number of the first client");
    clients->add_flag("--flood", load.flood, "Send first messages only and ignore replies");
    std::string address;
    bool noEcho = false;
    CLI::App* server = app.add_subcommand("server", "Answer relayed requests until SIGTERM");
    server->add_option("address", address, "The server's address")->required();
    server->add_flag("--no-echo", noEcho, "Return no option 82 and no interface-id");
    CLI11_PARSE(app, argc, argv);
    try {
        if (server->parsed()) {
            serve(address, !noEcho);
        } else {
            const auto ours = load.v6 ? clients6(load.interface) : clients4(load.interface);
            Generator generator(*ours, load);
            generator.run();
            generator.report();
        }
    } catch (const std::exception& e) {
        std::cerr << "dhcpload: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
