#include "DhcpLib/Dhcp6Hdr/RemoteId.h"

namespace DhcpLib {

Dhcp6RemoteIdBase::~Dhcp6RemoteIdBase() = default;

void Dhcp6RemoteIdBase::readBase() {
    read(entno_);
    duidIs(opt(), Dhcp6Const::duid_offset);
}

Dhcp6Duid::Ptr Dhcp6RemoteIdBase::duidIs(const Dhcp6OptionPtr& opt, U16 offset) {
    if (!duid_ || duid_->opt() != opt || duid_->offset() != offset) duid_ = dhcp6DuidFactory(opt, offset);
    return duid_;
}

Dhcp6RemoteId::Ptr dhcp6RemoteIdFactory(const Dhcp6OptionPtr& opt) { return Kcore::makeNode<Dhcp6RemoteId>(opt); }
const Kcore::TypeData& Dhcp6RemoteId::typeData() const { return Kcore::typeDataOf<Dhcp6RemoteId>(); }
Dhcp6RemoteId::Ptr Dhcp6RemoteId::Dhcp6RemoteIdIs(const Dhcp6OptionPtr& opt) { return dhcp6RemoteIdFactory(opt); }

void Dhcp6RemoteId::handleInitialized() {
    if (!beginInitialization()) return;
    readBase();
    const RemoteIdFields fields = decodeRemoteId(bytes(), optAt(), optLen());
    interfaceId_.value = fields.interfaceId;
    subOptType_ = fields.subOptType;
    subOptLen_ = fields.subOptLen;
    subOptValue_ = fields.subOptValue;
}

void Dhcp6RemoteId::subOptValueIs(const Kcore::String& value) {
    const U8 len = static_cast<U8>(value.size());
    requireRoom(RemoteIdFields::subOptTypeAt, sizeof(U8));
    requireRoom(RemoteIdFields::subOptLenAt, sizeof(U8));
    store(RemoteIdFields::subOptValueAt, value.view());
    store(RemoteIdFields::subOptTypeAt, Dhcp6Const::rIdSubOptIntfVlan);
    store(RemoteIdFields::subOptLenAt, len);
    subOptType_ = Dhcp6Const::rIdSubOptIntfVlan;
    subOptLen_ = len;
    subOptValue_ = value;
}

Dhcp6RemoteIdIntfName::Ptr dhcp6RemoteIdIntfNameFactory(const Dhcp6OptionPtr& opt) {
    return Kcore::makeNode<Dhcp6RemoteIdIntfName>(opt);
}
const Kcore::TypeData& Dhcp6RemoteIdIntfName::typeData() const { return Kcore::typeDataOf<Dhcp6RemoteIdIntfName>(); }
Dhcp6RemoteIdIntfName::Ptr Dhcp6RemoteIdIntfName::Dhcp6RemoteIdIntfNameIs(const Dhcp6OptionPtr& opt) {
    return dhcp6RemoteIdIntfNameFactory(opt);
}

void Dhcp6RemoteIdIntfName::handleInitialized() {
    if (!beginInitialization()) return;
    readBase();
    constexpr U8 before = Dhcp6Const::interfaceName_offset - Dhcp6Const::optdata_offset;
    interfaceName_ = text(Dhcp6Const::interfaceName_offset, static_cast<U8>(optLen() - before));
}

void Dhcp6RemoteIdIntfName::interfaceNameIs(const Kcore::String& name) {
    store(Dhcp6Const::interfaceName_offset, name.view());
    interfaceName_ = name;
}

Dhcp6RemoteIdHostAndIntfName::Ptr dhcp6RemoteIdHostAndIntfNameFactory(const Dhcp6OptionPtr& opt,
                                                                      U8 hostAndIntfNameLen) {
    return Kcore::makeNode<Dhcp6RemoteIdHostAndIntfName>(opt, hostAndIntfNameLen);
}
const Kcore::TypeData& Dhcp6RemoteIdHostAndIntfName::typeData() const {
    return Kcore::typeDataOf<Dhcp6RemoteIdHostAndIntfName>();
}
Dhcp6RemoteIdHostAndIntfName::Ptr Dhcp6RemoteIdHostAndIntfName::Dhcp6RemoteIdHostAndIntfNameIs(
    const Dhcp6OptionPtr& opt, U8 hostAndIntfNameLen) {
    return dhcp6RemoteIdHostAndIntfNameFactory(opt, hostAndIntfNameLen);
}

void Dhcp6RemoteIdHostAndIntfName::handleInitialized() {
    if (!beginInitialization()) return;
    readBase();
    hostAndIntfName_ = text(Dhcp6Const::hostAndIntfName_offset, hostAndIntfNameLen_);
}

void Dhcp6RemoteIdHostAndIntfName::hostAndIntfNameIs(const Kcore::String& name) {
    std::string padded(name.view().substr(0, hostAndIntfNameLen_));
    padded.resize(hostAndIntfNameLen_);
    store(Dhcp6Const::hostAndIntfName_offset, std::string_view(padded));
    hostAndIntfName_ = name;
}

}  // namespace DhcpLib
