#include "Interface/IntfStatusDir.h"

namespace Interface {

namespace {

const Kcore::ModuleTypes<AllIntfStatusDir, AllIntfStatusLocalDir> registration{"Interface/IntfStatusDir"};

}  // namespace

IntfStatusDir::~IntfStatusDir() = default;

AllIntfStatusDir::AllIntfStatusDir(const Kcore::Ptr<const KernelNetInfo::Status>& kniStatus)
    : kniStatus_(kniStatus),
      devices_(
          kniStatus_->intfStatus().observers().observe([this](const Kcore::String& name) { handleDevice(name); })) {
    for (const auto& [name, status] : kniStatus_->intfStatus().entries()) handleDevice(name);
}

AllIntfStatusDir::~AllIntfStatusDir() = default;
const Kcore::TypeData& AllIntfStatusDir::typeData() const { return Kcore::typeDataOf<AllIntfStatusDir>(); }

void AllIntfStatusDir::handleDevice(const Kcore::String& deviceName) {
    if (!Kitnet::IntfId::isValidName(deviceName)) return;
    if (kniStatus_->intfStatus().find(deviceName) != nullptr)
        deviceName_.entryIs(Kitnet::IntfId(deviceName), deviceName);
    else
        deviceName_.entryDel(Kitnet::IntfId(deviceName));
}

AllIntfStatusLocalDir::~AllIntfStatusLocalDir() = default;
const Kcore::TypeData& AllIntfStatusLocalDir::typeData() const { return Kcore::typeDataOf<AllIntfStatusLocalDir>(); }

}  // namespace Interface
