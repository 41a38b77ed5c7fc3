#include "DhcpLib/Dhcp6Hdr/Duid.h"

#include "Tyk/Exception.h"

namespace DhcpLib {

namespace {

void require(bool met, std::string_view refusal) {
    if (!met) throw Tyk::InternalException(refusal);
}

}  // namespace

Dhcp6Duid::Ptr dhcp6DuidFactory(const Dhcp6OptionPtr& opt, U16 offset) {
    return Kcore::makeNode<Dhcp6Duid>(opt, offset);
}
const Kcore::TypeData& Dhcp6Duid::typeData() const { return Kcore::typeDataOf<Dhcp6Duid>(); }
Dhcp6Duid::Ptr Dhcp6Duid::Dhcp6DuidIs(const Dhcp6OptionPtr& opt, U16 offset) { return dhcp6DuidFactory(opt, offset); }

void Dhcp6Duid::handleInitialized() {
    if (!beginInitialization()) return;
    const DuidFields duid = decodeDuid(bytes(), optAt(), offset_);
    duidType_ = duid.duidType;
    hardwareType_ = duid.hardwareType;
    duidTime_ = duid.duidTime;
    llAddr_ = duid.llAddr;
    uuid_ = duid.uuid;
    entno_ = duid.entno;
    entId_ = duid.entId;
}

void Dhcp6Duid::duidTypeIs(U16 type) {
    storeField(0, type);
    duidType_ = type;
}

void Dhcp6Duid::hardwareTypeIs(U16 type) {
    require(DuidFields::hasLinkLayer(duidType_), "DuidHardwareType is set for a invalid duidType");
    storeField(DuidFields::hardwareTypeAt, type);
    hardwareType_ = type;
}

void Dhcp6Duid::duidTimeIs(U32 time) {
    require(DuidFields::hasTime(duidType_), "DuidTime is set for invalid duidType");
    storeField(DuidFields::duidTimeAt, time);
    duidTime_ = time;
}

void Dhcp6Duid::llAddrIs(const Kitnet::EthAddr& address) {
    require(DuidFields::hasLinkLayer(duidType_), "DuidllAddr is set for invalid duidType");
    storeField(DuidFields::macAt(duidType_), address);
    llAddr_ = address;
}

void Dhcp6Duid::uuidIs(const Kcore::String& uuid) {
    require(duidType_ == Dhcp6Const::duidType_uuid, "Duiduuid is set for a invalid duidType");
    require(uuid.size() == Dhcp6Const::uuid_size, "Duiduuid is set for a invalid length");
    storeField(DuidFields::uuidAt, uuid.view());
    uuid_ = uuid;
}

void Dhcp6Duid::entnoIs(U32 entno) {
    require(duidType_ == Dhcp6Const::duidType_en, "Duidentno is set for a invalid duidType");
    storeField(DuidFields::entnoAt, entno);
    entno_ = entno;
}

void Dhcp6Duid::entIdIs(const Kcore::String& entId) {
    require(duidType_ == Dhcp6Const::duidType_en, "DuidentId is set for a invalid duidType");
    require(entId.size() == DuidFields::entIdBytes(bytes(), optAt()),
            "entId's length is mismatch with the client-ID's optionLength");
    storeField(DuidFields::entIdAt, entId.view());
    entId_ = entId;
}

}  // namespace DhcpLib
