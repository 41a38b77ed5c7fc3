#include "DhcpLib/DhcpSnoopingPamManager.h"

#include <iterator>

#include "DhcpLib/Constants.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

const Kcore::ModuleTypes<PamManager> registration{"DhcpLib/DhcpSnoopingPamManager"};

constexpr char dhcp6Name[] = "Dhcp6PamMan";
constexpr U16 everyProtocol = 3;  // packet(7), ETH_P_ALL
constexpr U32 receiveBufferBytes = 204800;

// Classic BPF instructions. Loads convert from network order; a load beyond the frame's end rejects the frame.
constexpr U16 ldh = 0x28;    // A = 16 bits at k
constexpr U16 ldb = 0x30;    // A = 8 bits at k
constexpr U16 ldhx = 0x48;   // A = 16 bits at X + k
constexpr U16 ldxb4 = 0xb1;  // X = 4 * (low 4 bits at k): the IPv4 header's length
constexpr U16 jeq = 0x15;    // A == k?
constexpr U16 jset = 0x45;   // A & k?
constexpr U16 ret = 0x06;    // take the first k bytes of the frame

// clang-format off
constexpr Kitnet::SockFilter dhcp4Filter[] = {
    // code, then, else, k
    {ldh,    0,  0, 12},      //  0  EtherType
    {jeq,    0,  7, 0x0800},  //  1  IPv4, else to 9
    {ldb,    0,  0, 23},      //  2  protocol
    {jeq,    0, 19, 17},      //  3  UDP, else reject
    {ldh,    0,  0, 20},      //  4  flags and fragment offset
    {jset,  17,  0, 0x1fff},  //  5  reject all but first fragments
    {ldxb4,  0,  0, 14},      //  6  header length
    {ldhx,   0,  0, 16},      //  7  UDP destination port
    {jeq,   13, 12, 67},      //  8  accept, else to 21
    {jeq,    2,  0, 0x8100},  //  9  802.1Q tag
    {jeq,    1,  0, 0x88a8},  // 10  802.1ad tag
    {jeq,    0, 11, 0x9100},  // 11  an older tag of provider bridges, else reject
    {ldh,    0,  0, 16},      // 12  EtherType after the tag
    {jeq,    0,  9, 0x0800},  // 13  IPv4, else reject
    {ldb,    0,  0, 27},      // 14  protocol
    {jeq,    0,  7, 17},      // 15  UDP, else reject
    {ldh,    0,  0, 24},      // 16  flags and fragment offset
    {jset,   5,  0, 0x1fff},  // 17  reject all but first fragments
    {ldxb4,  0,  0, 18},      // 18  header length
    {ldhx,   0,  0, 20},      // 19  UDP destination port
    {jeq,    1,  0, 67},      // 20  accept
    {jeq,    0,  1, 68},      // 21  accept, else reject
    {ret,    0,  0, 65535},   // 22  accept: the whole frame
    {ret,    0,  0, 0},       // 23  reject
};

constexpr Kitnet::SockFilter dhcp6Filter[] = {
    // code, then, else, k
    {ldh,    0,  0, 12},      //  0  EtherType
    {jeq,    0,  4, 0x86dd},  //  1  IPv6, else to 6
    {ldb,    0,  0, 20},      //  2  next header
    {jeq,    0, 13, 17},      //  3  UDP, else reject
    {ldh,    0,  0, 56},      //  4  UDP destination port
    {jeq,   10,  9, 547},     //  5  accept, else to 15
    {jeq,    2,  0, 0x8100},  //  6  802.1Q tag
    {jeq,    1,  0, 0x88a8},  //  7  802.1ad tag
    {jeq,    0,  8, 0x9100},  //  8  an older tag of provider bridges, else reject
    {ldh,    0,  0, 16},      //  9  EtherType after the tag
    {jeq,    0,  6, 0x86dd},  // 10  IPv6, else reject
    {ldb,    0,  0, 24},      // 11  next header
    {jeq,    0,  4, 17},      // 12  UDP, else reject
    {ldh,    0,  0, 60},      // 13  UDP destination port
    {jeq,    1,  0, 547},     // 14  accept
    {jeq,    0,  1, 546},     // 15  accept, else reject
    {ret,    0,  0, 65535},   // 16  accept: the whole frame
    {ret,    0,  0, 0},       // 17  reject
};
// clang-format on

constexpr Kitnet::SockFilterProgram dhcp4Program{std::size(dhcp4Filter), dhcp4Filter};
constexpr Kitnet::SockFilterProgram dhcp6Program{std::size(dhcp6Filter), dhcp6Filter};

/// Stores a new object in `held` and returns it. The old object is destroyed first, because a manager clears the
/// directories it filled.
template <class T, class... Args>
Kcore::Ptr<T> renew(Kcore::Ptr<T>& held, const Args&... args) {
    held = nullptr;
    return held = Kcore::makeNode<T>(args...);
}

}  // namespace

PamManager::Ptr pamManagerFactory(const Kcore::String& name, const PamManager::AllIntfStatusDirPtr& allIntfStatusDir,
                                  const PamManager::AllIntfStatusLocalDirPtr& allIntfStatusLocalDir,
                                  const PamManager::KniStatusPtr& kniStatus) {
    return Kcore::makeNode<PamManager>(name, allIntfStatusDir, allIntfStatusLocalDir, kniStatus);
}
const Kcore::TypeData& PamManager::typeData() const { return Kcore::typeDataOf<PamManager>(); }
PamManager::Ptr PamManager::PamManagerIs(const Kcore::String& name, const AllIntfStatusDirPtr& allIntfStatusDir,
                                         const AllIntfStatusLocalDirPtr& allIntfStatusLocalDir,
                                         const KniStatusPtr& kniStatus) {
    return pamManagerFactory(name, allIntfStatusDir, allIntfStatusLocalDir, kniStatus);
}

PamManager::PamManager(const Kcore::String& name, const AllIntfStatusDirPtr& allIntfStatusDir,
                       const AllIntfStatusLocalDirPtr& allIntfStatusLocalDir, const KniStatusPtr& kniStatus)
    : name_(name),
      allIntfStatusDir_(allIntfStatusDir),
      allIntfStatusLocalDir_(allIntfStatusLocalDir),
      kniStatus_(kniStatus) {
    handleInitialized();
}

void PamManager::handleInitialized() {
    if (initialized_) return;
    Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {}, "PamManagerhandleInitialized name: {}", name_);
    initialized_ = true;
    deviceIntfStatusDirIs("disd");
    pamDesiredIntfDirIs("pdid");
    ethDevPamCollectionIs("edpc");
    intfStatusManagerIs(allIntfStatusDir_, allIntfStatusLocalDir_, deviceIntfStatusDir_, kniStatus_)
        ->kernelOnlyInterfaceIs(Kitnet::IntfId("Cpu"), "cpu");
    const auto pam = ethDevPamManagerIs(pamDesiredIntfDir_, ethDevPamCollection_, deviceIntfStatusDir_);
    pam->protocolIs(everyProtocol);
    pam->filterProgramIs(name_ == dhcp6Name ? dhcp6Program : dhcp4Program);
    pam->receiveBufferIs(receiveBufferBytes);
    pam->enabledIs(true);
}

Interface::DeviceIntfStatusDir::Ptr PamManager::deviceIntfStatusDirIs(const Kcore::String& name) {
    return renew(deviceIntfStatusDir_, name);
}

Interface::PamDesiredIntfDir::Ptr PamManager::pamDesiredIntfDirIs(const Kcore::String& name) {
    return renew(pamDesiredIntfDir_, name);
}

Interface::EthDevPamCollection::Ptr PamManager::ethDevPamCollectionIs(const Kcore::String& name) {
    return renew(ethDevPamCollection_, name);
}

Interface::LagLocalDeviceIntfStatusManager::Ptr PamManager::intfStatusManagerIs(
    const AllIntfStatusDirPtr& allIntfStatusDir, const AllIntfStatusLocalDirPtr& allIntfStatusLocalDir,
    const Interface::DeviceIntfStatusDir::Ptr& deviceIntfStatusDir, const KniStatusPtr& kniStatus) {
    return renew(intfStatusManager_, allIntfStatusDir, allIntfStatusLocalDir, deviceIntfStatusDir, kniStatus);
}

Interface::EthDevPamManager::Ptr PamManager::ethDevPamManagerIs(
    const Interface::PamDesiredIntfDir::Ptr& pamDesiredIntfDir,
    const Interface::EthDevPamCollection::Ptr& ethDevPamCollection,
    const Interface::DeviceIntfStatusDir::Ptr& deviceIntfStatusDir) {
    return renew(ethDevPamManager_, pamDesiredIntfDir, ethDevPamCollection, deviceIntfStatusDir);
}

}  // namespace DhcpLib
