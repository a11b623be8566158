#include <foundation/storage/backend/local/detail/posix/RealPath.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace foundation::storage::backend::local::detail {

std::string realPath(const provider::StorageIRI& location, const std::string& path) {
  struct Free {
    void operator()(char* text) const { std::free(text); }
  };
  const std::unique_ptr<char, Free> found(realpath(path.c_str(), nullptr));
  if (found == nullptr)
    throw systemFailure(errno, "realpath", location);
  return found.get();
}

}  // namespace foundation::storage::backend::local::detail
