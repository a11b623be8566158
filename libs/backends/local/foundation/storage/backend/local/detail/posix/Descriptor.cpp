#include <foundation/storage/backend/local/detail/posix/Descriptor.h>

#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>

#include <cerrno>

namespace foundation::storage::backend::local::detail {

Descriptor::~Descriptor() {
  const int error = errno;
  close();
  errno = error;
}

int Descriptor::close() noexcept {
  if (!isOpen() || sys().close(std::exchange(number_, -1)) == 0)
    return 0;
  return errno == EINTR ? 0 : errno;  // interrupted, but closed all the same
}

}  // namespace foundation::storage::backend::local::detail
