#include <foundation/storage/backend/local/detail/posix/Replacement.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/Permissions.h>
#include <foundation/storage/backend/local/detail/posix/Rename.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/local/detail/posix/Xattrs.h>
#include <foundation/storage/backend/support/Log.h>
#include <foundation/storage/provider/ScratchFiles.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <utility>

namespace foundation::storage::backend::local::detail {

using provider::ByteStreamOpenFailure;

namespace {

constexpr auto keptOwner = static_cast<uid_t>(-1);  // chown(2)
constexpr auto keptGroup = static_cast<gid_t>(-1);

bool hasAccessList(const Replaced& replaced) {
  return std::find(replaced.attributes.begin(), replaced.attributes.end(), accessListName) != replaced.attributes.end();
}

/// What the scratch file may be created with before it is known which group it has.
mode_t initialMode(const Replaced& replaced) { return modeFor(replaced.status.st_mode, false); }

}  // namespace

Replacement::Replacement(Configuration configuration, TransactionTarget target)
    : configuration_(std::move(configuration)),
      target_(std::move(target)),
      scratch_(target_.location.getParent(), provider::makeScratchName()),
      path_(nativePath(scratch_)) {}

// It is the finished delegate that makes the destructor remove the file where the body throws.
Replacement::Replacement(Configuration configuration, TransactionTarget target, int flags, mode_t modeOfNew)
    : Replacement(std::move(configuration), std::move(target)) {
  openScratch(flags, modeOfNew);
  if (target_.replaced)
    takePermissions();
}

Replacement::~Replacement() {
  try {
    abort();
  } catch (...) {
    support::logCaughtFailure(
        "A scratch file could not be removed.");  // its name says what it is, so that it can be swept
  }
}

void Replacement::openScratch(int flags, mode_t modeOfNew) {
  const auto mode = target_.replaced ? initialMode(*target_.replaced) : modeOfNew;
  descriptor_ = configuration_.files->open(path_, flags | O_EXCL | O_NOFOLLOW | O_NOCTTY, mode);
  if (!descriptor_.isOpen())
    throw streamFailure<ByteStreamOpenFailure>(errno, "open", target_.location);
  exists_ = true;
}

void Replacement::takePermissions() {
  const auto& replaced = target_.replaced->status;
  struct stat status;
  if (sys().fstat(descriptor(), &status) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fstat", target_.location);
  hasGroup_ = status.st_gid == replaced.st_gid || sys().fchown(descriptor(), keptOwner, replaced.st_gid) == 0;
  owner_ = status.st_uid;
  // The folder's would let in whom the replaced file keeps out.
  if (!dropAccessList(descriptor(), accessListName))
    throw streamFailure<ByteStreamOpenFailure>(errno, "fremovexattr", target_.location);
  const mode_t mode = modeFor(replaced.st_mode, hasGroup_ && !hasAccessList(*target_.replaced));
  // Only where that makes a difference: not every file system can set them.
  if ((status.st_mode & 07777) != mode && sys().fchmod(descriptor(), mode) == -1)
    throw streamFailure<ByteStreamOpenFailure>(errno, "fchmod", target_.location);
}

void Replacement::commit(provider::ReplacementPolicy policy) {
  if (spoilt_)
    std::rethrow_exception(spoilt_);
  if (!std::exchange(isFinished_, true)) {
    try {
      finishContent();
    } catch (...) {
      spoilt_ = std::current_exception();
      throw;
    }
  }
  if (!configuration_.isDurable)
    return putInPlace(policy);
  const auto folder = configuration_.files->open(folderOf(target_.path), O_RDONLY | O_DIRECTORY);
  if (!folder.isOpen())
    throw systemFailure(errno, "open", target_.location);
  putInPlace(policy);
  // Some file systems have nothing to do for a folder, and say so.
  if (sys().fsync(folder.get()) == 0 || errno == EINVAL)
    return;
  const auto failure = systemFailure(errno, "fsync", target_.location);
  spoilt_ = std::make_exception_ptr(failure);
  throw failure;
}

void Replacement::abort() {
  descriptor_.close();  // what was written does not matter any more
  if (!exists_)
    return;
  const auto place = configuration_.files->place(path_);
  if (!place || sys().unlinkat(place->folder, place->name.c_str(), 0) == -1)
    throw systemFailure(errno, "unlink", scratch_);
  exists_ = false;
}

void Replacement::finishContent() {
  takeAttributes();
  // Once it has failed, another fsync may succeed although data is lost (fsync(2), "Errors").
  if (configuration_.isDurable && sys().fsync(descriptor()) == -1)
    throw systemFailure(errno, "fsync", target_.location);
  if (const int error = descriptor_.close())
    throw systemFailure(error, "close", target_.location);
}

void Replacement::takeAttributes() const {
  if (!target_.replaced)
    return;
  const auto& replaced = *target_.replaced;
  if (!replaced.attributes.empty())
    copyAttributesOf(replaced);
  if (owner_ != replaced.status.st_uid)
    sys().fchown(descriptor(), replaced.status.st_uid, keptGroup);  // most programs may not
}

void Replacement::copyAttributesOf(const Replaced& replaced) const {
  const auto reached = configuration_.files->reach(target_.path, Links::Keep);
  if (!reached)
    return;  // it has been removed meanwhile
  const auto copy = [&](Attributes which) {
    copyAttributes(reached->path, replaced.attributes, descriptor(), which, Unsupported::Fail, target_.location);
  };
  // Even its owner can give attributes only to a file that may be written to.
  constexpr mode_t writable = 0200;
  const mode_t mode = modeFor(replaced.status.st_mode, hasGroup_ && !hasAccessList(replaced));
  const bool isReadOnly = (mode & writable) == 0;
  if (isReadOnly && sys().fchmod(descriptor(), mode | writable) == -1)
    throw systemFailure(errno, "fchmod", target_.location);
  copy(Attributes::All);
  if (isReadOnly && sys().fchmod(descriptor(), mode) == -1)
    throw systemFailure(errno, "fchmod", target_.location);
  if (hasGroup_)
    copy(Attributes::AccessLists);
}

void Replacement::putInPlace(provider::ReplacementPolicy policy) {
  const auto from = configuration_.files->place(path_);
  const auto to = configuration_.files->place(target_.path);
  if (!from || !to)
    throw systemFailure(errno, "rename", target_.location);
  const bool isExclusive = preservesExisting(policy);
  if ((isExclusive ? renameExclusively(*from, *to, MovedEntry::File) : renameOver(*from, *to)) == -1)
    throw systemFailure(errno, "rename", target_.location);
  exists_ = false;
}

}  // namespace foundation::storage::backend::local::detail
