#include <foundation/storage/backend/local/detail/posix/Places.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>

#include <cerrno>
#include <utility>

namespace foundation::storage::backend::local::detail {

Place requirePlace(const FileSystem& files, const provider::StorageIRI& location, const char* call) {
  auto place = files.place(nativePath(location));
  if (!place)
    throw systemFailure(errno, call, location);
  return *std::move(place);
}

Reached requireReached(const FileSystem& files, const provider::StorageIRI& location) {
  auto reached = files.reach(nativePath(location), Links::Follow);
  if (!reached)
    throw systemFailure(errno, "open", location);
  return *std::move(reached);
}

}  // namespace foundation::storage::backend::local::detail
