#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace foundation::storage::testing {

/// Gives up, for this program, the super-user's power to read and write whatever the permissions say (CAP_DAC_OVERRIDE
/// and CAP_DAC_READ_SEARCH in capabilities(7)): what is tested about permissions is to hold for root as for all others.
/// To be called before there are threads.
inline void obeyPermissions() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3]{};
  if (syscall(SYS_capget, &header, sets) == -1)
    throw std::system_error(errno, std::generic_category(), "capget");
  sets[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
  if (syscall(SYS_capset, &header, sets) == -1)
    throw std::system_error(errno, std::generic_category(), "capset");
}

}  // namespace foundation::storage::testing
