#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace foundation::storage::backend::local::detail {

/// An open file that is removed again unless it is kept.
class ScratchFile {
 public:
  /// Makes and opens a file; without `O_CREAT` opens one, which is then not removed. Throws
  /// `ByteStreamOpenFailure`.
  /// @param flags        of open(2)
  /// @param permissions  exactly those that the file gets, and at no moment more; by default 0666 less the umask
  ScratchFile(const provider::StorageIRI& location, int flags, const std::optional<mode_t>& permissions);
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  Descriptor takeDescriptor() noexcept { return std::move(descriptor_); }
  void keep() noexcept { path_.reset(); }

 private:
  ScratchFile(const provider::StorageIRI& location, int flags, mode_t mode);
  void setPermissions(const provider::StorageIRI& location, mode_t permissions) const;

  std::optional<std::string> path_;  ///< where it is to be removed
  Descriptor descriptor_;
};

}  // namespace foundation::storage::backend::local::detail
