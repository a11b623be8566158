#pragma once

#include <foundation/storage/backend/local/detail/posix/FileSystem.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

inline bool isSameFile(const struct stat& a, const struct stat& b) noexcept {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// What is at `path`; nothing where nothing can be there. Throws `Exception` where that cannot be found out, for want
/// of permission for instance.
std::optional<struct stat> findStatus(const FileSystem& files, const provider::StorageIRI& location,
                                      const std::string& path, Links links);

/// What is at `path`, links followed. Throws `Exception` where nothing is.
struct stat requireStatus(const FileSystem& files, const provider::StorageIRI& location, const std::string& path);

/// Whether the link at `path` leads to something, and then to what.
std::optional<struct stat> findStatusBehindLink(const FileSystem& files, const provider::StorageIRI& location,
                                                const std::string& path);

}  // namespace foundation::storage::backend::local::detail
