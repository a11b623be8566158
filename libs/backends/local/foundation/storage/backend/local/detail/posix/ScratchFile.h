#pragma once

#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/backend/local/detail/posix/TransactionTarget.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace foundation::storage::backend::local::detail {

/// An open file that is removed again unless it is kept.
class ScratchFile {
 public:
  /// Makes and opens a file where there is none. Throws `ByteStreamOpenFailure`; always without `O_CREAT`.
  /// @param flags        of open(2)
  /// @param permissions  those that the file gets, and at no moment more; by default 0666 less the umask. Where
  ///                     the group cannot be given, or the group's bits are not the group's, the group may do
  ///                     what the others may.
  ScratchFile(const provider::StorageIRI& location, int flags, const std::optional<Permissions>& permissions);
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  Descriptor takeDescriptor() noexcept { return std::move(descriptor_); }
  void keep() noexcept { path_.reset(); }

 private:
  ScratchFile(const provider::StorageIRI& location, int flags, mode_t mode);
  void setPermissions(const provider::StorageIRI& location, const Permissions& permissions) const;

  std::optional<std::string> path_;  ///< where it is to be removed
  Descriptor descriptor_;
};

}  // namespace foundation::storage::backend::local::detail
