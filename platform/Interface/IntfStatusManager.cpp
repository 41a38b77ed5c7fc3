#include "Interface/IntfStatusManager.h"

namespace Interface {

namespace {

const Kcore::ModuleTypes<DeviceIntfStatusDir, KniIntfStatusManager, LagLocalDeviceIntfStatusManager> registration{
    "Interface/IntfStatusManager"};

}  // namespace

KniIntfStatusManager::KniIntfStatusManager(const DeviceIntfStatusDir::Ptr& deviceIntfStatusDir,
                                           const Kcore::Ptr<const KernelNetInfo::Status>& kniStatus)
    : deviceIntfStatusDir_(deviceIntfStatusDir),
      kniStatus_(kniStatus),
      devices_(kniStatus_->intfStatus().observers().observe(
          [this](const Kcore::String& deviceName) { handleDevice(deviceName); })) {}

KniIntfStatusManager::~KniIntfStatusManager() {
    for (const auto& [intf, deviceName] : deviceOfIntf_) deviceIntfStatusDir_->deviceIntfStatusDel(intf);
}

const Kcore::TypeData& KniIntfStatusManager::typeData() const { return Kcore::typeDataOf<KniIntfStatusManager>(); }

void KniIntfStatusManager::kernelOnlyInterfaceIs(const Kitnet::IntfId& intf, const Kcore::String& deviceName) {
    Tyk::fmtrace(traceHandle(), 4, {}, "kernel-only interface {} on device {}", intf, deviceName);
    kernelOnlyInterface_.insertOrAssign(intf, deviceName);
    handleIntf(intf);
}

void KniIntfStatusManager::kernelOnlyInterfaceDel(Kitnet::IntfId intf) {
    kernelOnlyInterface_.erase(intf);
    handleIntf(intf);
}

const Kcore::String* KniIntfStatusManager::deviceName(const Kitnet::IntfId& intf) const {
    return kernelOnlyInterface_.find(intf);
}

void KniIntfStatusManager::handleIntf(const Kitnet::IntfId& intf) {
    const Kcore::String* const name = deviceName(intf);
    if (name != nullptr)
        deviceOfIntf_.insertOrAssign(intf, *name);
    else
        deviceOfIntf_.erase(intf);

    const KernelNetInfo::IntfStatus* const status = name != nullptr ? kniStatus_->intfStatus().find(*name) : nullptr;
    if (status != nullptr)
        deviceIntfStatusDir_->deviceIntfStatusIs(intf, *status);
    else
        deviceIntfStatusDir_->deviceIntfStatusDel(intf);
}

void KniIntfStatusManager::handleDevice(const Kcore::String& deviceName) {
    std::vector<Kitnet::IntfId> carried;
    for (const auto& [intf, name] : deviceOfIntf_)
        if (name == deviceName) carried.push_back(intf);
    for (const Kitnet::IntfId& intf : carried) handleIntf(intf);
}

LagLocalDeviceIntfStatusManager::LagLocalDeviceIntfStatusManager(
    const Kcore::Ptr<const AllIntfStatusDir>& allIntfStatusDir,
    const Kcore::Ptr<const AllIntfStatusLocalDir>& allIntfStatusLocalDir,
    const DeviceIntfStatusDir::Ptr& deviceIntfStatusDir, const Kcore::Ptr<const KernelNetInfo::Status>& kniStatus)
    : KniIntfStatusManager(deviceIntfStatusDir, kniStatus),
      allIntfStatusDir_(allIntfStatusDir),
      allIntfStatusLocalDir_(allIntfStatusLocalDir),
      life_("LagLocalDeviceIntfStatusManager"),
      all_(observe(*allIntfStatusDir_)),
      local_(observe(*allIntfStatusLocalDir_)) {}

LagLocalDeviceIntfStatusManager::~LagLocalDeviceIntfStatusManager() = default;
const Kcore::TypeData& LagLocalDeviceIntfStatusManager::typeData() const {
    return Kcore::typeDataOf<LagLocalDeviceIntfStatusManager>();
}

const Kcore::String* LagLocalDeviceIntfStatusManager::deviceName(const Kitnet::IntfId& intf) const {
    if (const Kcore::String* const local = allIntfStatusLocalDir_->deviceName(intf)) return local;
    if (const Kcore::String* const known = allIntfStatusDir_->deviceName(intf)) return known;
    return KniIntfStatusManager::deviceName(intf);
}

LagLocalDeviceIntfStatusManager::Observation LagLocalDeviceIntfStatusManager::observe(const IntfStatusDir& dir) {
    for (const auto& [intf, deviceName] : dir.deviceName().entries()) handleIntf(intf);
    return dir.deviceName().observers().observe([this](const Kitnet::IntfId& intf) { handleIntf(intf); });
}

}  // namespace Interface
