#include "Privileges.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace DhcpRelay {

namespace {

constexpr unsigned wanted = 1u << CAP_NET_RAW | 1u << CAP_NET_BIND_SERVICE;

[[noreturn]] void raise() { throw std::system_error(errno, std::system_category(), "dropping privileges"); }

}  // namespace

void dropPrivileges() {
    // Without CAP_SETPCAP this fails. PR_SET_NO_NEW_PRIVS below then keeps the process from gaining capabilities.
    for (unsigned long capability = 0; prctl(PR_CAPBSET_READ, capability, 0, 0, 0) >= 0; ++capability)
        if (capability >= 32 || (wanted >> capability & 1) == 0)
            if (prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0 && errno != EPERM) raise();
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) raise();

    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    if (syscall(SYS_capget, &header, data) != 0) raise();
    data[0].effective = data[0].permitted &= wanted;
    data[0].inheritable = 0;
    data[1] = {};
    if (syscall(SYS_capset, &header, data) != 0) raise();
}

}  // namespace DhcpRelay
