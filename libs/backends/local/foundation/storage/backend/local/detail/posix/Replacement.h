#pragma once

#include <foundation/storage/backend/local/detail/posix/Configuration.h>
#include <foundation/storage/backend/local/detail/posix/Descriptor.h>
#include <foundation/storage/backend/local/detail/posix/TransactionTarget.h>
#include <foundation/storage/provider/ReplacementPolicy.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <exception>
#include <sys/stat.h>

namespace foundation::storage::backend::local::detail {

/// A scratch file that is written beside a file and then takes its place in one step. Unless that happens, the
/// destructor removes it.
///
/// The scratch file never may be read or written by anybody who may not do so with the replaced file: it has that
/// file's permissions and group as far as these can be given. Where the group cannot be given, or the group's bits
/// are not the group's (acl(5)), the group may do what all others may.
class Replacement {
 public:
  /// Makes and opens the scratch file. Throws `ByteStreamOpenFailure`; always without `O_CREAT`.
  /// @param flags      of open(2)
  /// @param modeOfNew  where no file is replaced; less the umask
  Replacement(Configuration configuration, TransactionTarget target, int flags, mode_t modeOfNew = 0666);
  ~Replacement();
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// Open for writing until it is committed or aborted.
  int descriptor() const noexcept { return descriptor_.get(); }
  const provider::StorageIRI& scratchLocation() const noexcept { return scratch_; }

  /// Gives the scratch file the replaced file's owner, extended attributes and access control list, as far as this
  /// program may, closes it and renames it; with durability, makes the content durable before the rename and the
  /// rename after it (fsync(2)).
  ///
  /// Throws `Exception`. Then the target is as it was and the commit can be tried again, unless what was written may
  /// be incomplete: that fails in the same way ever after. So does the last step, the rename that is to be made
  /// durable; only then the new content is in place already.
  void commit(provider::ReplacementPolicy policy);

  /// Throws `Exception` where the scratch file cannot be removed; it can be tried again.
  void abort();

 private:
  Replacement(Configuration configuration, TransactionTarget target);
  void openScratch(int flags, mode_t modeOfNew);
  void takePermissions();
  void finishContent();
  void takeAttributes() const;
  void copyAttributesOf(const Replaced& replaced) const;
  void putInPlace(provider::ReplacementPolicy policy);

  const Configuration configuration_;
  const TransactionTarget target_;
  const provider::StorageIRI scratch_;
  const std::string path_;  ///< of the scratch file
  Descriptor descriptor_;
  bool exists_ = false;
  uid_t owner_ = 0;            ///< of the scratch file, where a file is replaced
  bool hasGroup_ = true;       ///< the replaced file's
  bool isFinished_ = false;    ///< its content
  std::exception_ptr spoilt_;  ///< why what was written may be incomplete
};

}  // namespace foundation::storage::backend::local::detail
