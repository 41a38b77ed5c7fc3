#include "Interface/EthDevPamManager.h"

namespace Interface {

namespace {

const Kcore::ModuleTypes<PamDesiredIntfDir, EthDevPamCollection, EthDevPamManager> registration{
    "Interface/EthDevPamManager"};

const std::error_code unwanted = std::make_error_code(std::errc::operation_canceled);

}  // namespace

PamManagerBase::~PamManagerBase() = default;

void PamManagerBase::enabledIs(bool enabled) {
    if (enabled_ == enabled) return;
    Tyk::fmtrace(traceHandle(), 4, {}, "enabled {}", enabled);
    enabled_ = enabled;
    handleSettings();
}

EthDevPamManagerBase::~EthDevPamManagerBase() = default;

void EthDevPamManagerBase::protocolIs(U16 protocol) {
    Tyk::fmtrace(traceHandle(), 4, {}, "protocol {}", protocol);
    settings_.protocol = protocol;
    handleSettings();
}

void EthDevPamManagerBase::filterProgramIs(const Kitnet::SockFilterProgram& program) {
    Tyk::fmtrace(traceHandle(), 4, {}, "filter program of {} instructions", program.count);
    settings_.filterProgram = program;
    handleSettings();
}

void EthDevPamManagerBase::receiveBufferIs(U32 bytes) {
    Tyk::fmtrace(traceHandle(), 4, {}, "receive buffer {}", bytes);
    settings_.receiveBuffer = bytes;
    handleSettings();
}

EthDevPamManager::EthDevPamManager(const Kcore::Ptr<const PamDesiredIntfDir>& pamDesiredIntfDir,
                                   const EthDevPamCollection::Ptr& ethDevPamCollection,
                                   const Kcore::Ptr<const DeviceIntfStatusDir>& deviceIntfStatusDir)
    : pamDesiredIntfDir_(pamDesiredIntfDir),
      ethDevPamCollection_(ethDevPamCollection),
      deviceIntfStatusDir_(deviceIntfStatusDir),
      life_("EthDevPamManager"),
      desired_(pamDesiredIntfDir_->observers().observe([this](const Kitnet::IntfId& intf) { handleIntf(intf); })),
      devices_(deviceIntfStatusDir_->deviceIntfStatus().observers().observe(
          [this](const Kitnet::IntfId& intf) { handleIntf(intf); })) {}

EthDevPamManager::~EthDevPamManager() {
    for (const Kitnet::IntfId& intf : pamDesiredIntfDir_->intf()) pamDel(intf);
}

const Kcore::TypeData& EthDevPamManager::typeData() const { return Kcore::typeDataOf<EthDevPamManager>(); }

void EthDevPamManager::handleSettings() {
    for (const Kitnet::IntfId& intf : pamDesiredIntfDir_->intf()) {
        if (const EthDevPam::Ptr pam = ethDevPamCollection_->ethDevPam(intf))
            pam->close(unwanted, "the settings changed");
        handleIntf(intf);
    }
}

void EthDevPamManager::handleIntf(const Kitnet::IntfId& intf) {
    if (!enabled() || !pamDesiredIntfDir_->intf().contains(intf)) return pamDel(intf);
    EthDevPam::Ptr pam = ethDevPamCollection_->ethDevPam(intf);
    const bool isNew = !pam;
    if (isNew) pam = Kcore::makeNode<EthDevPam>(intf);
    const KernelNetInfo::IntfStatus* const device = deviceIntfStatusDir_->deviceIntfStatus(intf);
    if (device == nullptr)
        pam->close(std::make_error_code(std::errc::no_such_device), "there is no such interface");
    else if (!pam->isOpenOn(device->ifIndex()))
        pam->open(device->ifIndex(), settings());
    if (isNew) ethDevPamCollection_->ethDevPam_.insert(intf, pam);  // last, because it may throw
}

void EthDevPamManager::pamDel(const Kitnet::IntfId& intf) {
    if (const auto pam = ethDevPamCollection_->ethDevPam_.erase(intf))
        (*pam)->close(unwanted, "packet access is not wanted");
}

}  // namespace Interface
