#include <foundation/storage/backend/local/detail/posix/Permissions.h>

#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

namespace foundation::storage::backend::local::detail {

Ownership takeOwner(int file, const struct stat& status) noexcept {
  if (sys().fchown(file, status.st_uid, status.st_gid) == 0)
    return Ownership::Whole;
  constexpr auto keptOwner = static_cast<uid_t>(-1);  // chown(2)
  return sys().fchown(file, keptOwner, status.st_gid) == 0 ? Ownership::Group : Ownership::None;
}

mode_t modeFor(mode_t mode, bool isTheGroups) noexcept {
  constexpr mode_t groupBits = 0070;
  const mode_t all = mode & 0777;
  const mode_t ofOthers = (all & 0007) << 3;
  return (all & ~groupBits) | (all & (isTheGroups ? groupBits : ofOthers));
}

}  // namespace foundation::storage::backend::local::detail
