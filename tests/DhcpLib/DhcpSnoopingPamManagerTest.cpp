#include "DhcpLib/DhcpSnoopingPamManager.h"

#include <sys/wait.h>
#include <unistd.h>

#include "NetNamespace.h"
#include "Recorders.h"

using namespace DhcpTest;
using DhcpLib::PamManager;
using Kitnet::IntfId;

namespace {

struct PlatformInputs {
    KernelNetInfo::Status::Ptr kni = Kcore::makeNode<KernelNetInfo::Status>();
    Interface::AllIntfStatusDir::Ptr all = Kcore::makeNode<Interface::AllIntfStatusDir>(kni);
    Interface::AllIntfStatusLocalDir::Ptr local = Kcore::makeNode<Interface::AllIntfStatusLocalDir>();

    PamManager::Ptr pam(const char* name) const { return DhcpLib::pamManagerFactory(name, all, local, kni); }
};

using Lines = std::vector<std::string>;

const Lines dropped{"4 EthDevPamManager dropped", "4 LagLocalDeviceIntfStatusManager dropped",
                    "4 EthDevPamCollection edpc dropped", "4 PamDesiredIntfDir pdid dropped",
                    "4 DeviceIntfStatusDir disd dropped"};

TEST(PamManager, CreatesThePlatformObjectsAndDestroysThemInReverse) {
    const PlatformInputs inputs;
    TraceRecorder trace(4, {"Interface", "DhcpLib"});
    auto pam = inputs.pam("Dhcp6PamMan");
    EXPECT_EQ(trace.lines(),
              (Lines{"4 PamManagerhandleInitialized name: Dhcp6PamMan", "4 DeviceIntfStatusDir disd made",
                     "4 PamDesiredIntfDir pdid made", "4 EthDevPamCollection edpc made",
                     "4 LagLocalDeviceIntfStatusManager made", "4 kernel-only interface Cpu on device cpu",
                     "4 EthDevPamManager made", "4 protocol 3", "4 filter program of 18 instructions",
                     "4 receive buffer 204800", "4 enabled true"}));
    pam = nullptr;
    EXPECT_EQ(trace.lines(), dropped);
    EXPECT_EQ(PamManager::memAllocationTracker_.live(), 0u);
    EXPECT_EQ(inputs.all->useCount() + inputs.local->useCount(), 2u);
}

TEST(PamManager, DropsEachObjectOnItsOwn) {
    const PlatformInputs inputs;
    const auto pam = PamManager::PamManagerIs("Dhcp4PamMan", inputs.all, inputs.local, inputs.kni);
    EXPECT_TRUE(pam->initialized() && pam->name() == "Dhcp4PamMan" && pam->allIntfStatusDir() == inputs.all &&
                pam->allIntfStatusLocalDir() == inputs.local && pam->kniStatus() == inputs.kni);
    std::string types;
    for (const Kcore::Node* node : std::initializer_list<const Kcore::Node*>{
             pam.get(), inputs.kni.get(), inputs.all.get(), inputs.local.get(), pam->deviceIntfStatusDir().get(),
             pam->pamDesiredIntfDir().get(), pam->ethDevPamCollection().get(), pam->intfStatusManager().get(),
             pam->ethDevPamManager().get()})
        types.append(node->typeData().name()).append(" ");
    EXPECT_EQ(types,
              "PamManager Status AllIntfStatusDir AllIntfStatusLocalDir DeviceIntfStatusDir PamDesiredIntfDir "
              "EthDevPamCollection LagLocalDeviceIntfStatusManager EthDevPamManager ");
    TraceRecorder trace(4, {"Interface", "DhcpLib"});
    pam->handleInitialized();
    pam->ethDevPamManagerDel();
    pam->intfStatusManagerDel();
    pam->ethDevPamCollectionDel();
    pam->pamDesiredIntfDirDel();
    pam->deviceIntfStatusDirDel();
    EXPECT_EQ(trace.lines(), dropped);
}

using LiveSnooping = NetNamespace;

/// A UDP datagram to port 69.
const Octets unwanted =
    hex("FF*6 02 00 00 00 00 01 08 00  45 00 00 1C 00 00 00 00 40 11 00 00 00*4 FF*4") + hex("00 44 00 45 00 08 00 00");

TEST_F(LiveSnooping, NoFramePassesBeforeTheFilterIsAttached) {
    const PlatformInputs inputs;
    const auto pam = inputs.pam("Dhcp4PamMan");
    const IntfId va("va");
    pam->pamDesiredIntfDir()->intfIs(va);
    const pid_t child = fork();
    if (child == 0) {
        const RawSender sender("vb");
        for (int i = 0; i < 20000; ++i) sender.send(unwanted);
        _exit(HasFailure() ? 1 : 0);
    }
    int status = -1;
    while (waitpid(child, &status, WNOHANG) == 0) {
        pam->ethDevPamManager()->enabledIs(false);
        pam->ethDevPamManager()->enabledIs(true);
        EXPECT_FALSE(pam->ethDevPamCollection()->ethDevPam(va)->readPkt());
    }
    EXPECT_EQ(status, 0);
}

}  // namespace
