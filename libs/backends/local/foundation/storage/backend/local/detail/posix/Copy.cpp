#include <foundation/storage/backend/local/detail/posix/Copy.h>

#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/ContentCopy.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/OpenFile.h>
#include <foundation/storage/backend/local/detail/posix/Replacement.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/provider/FailureConversion.h>

#include <cerrno>
#include <fcntl.h>

namespace foundation::storage::backend::local::detail {

using provider::ErrorCode;
using provider::StorageIRI;
using provider::TransactionStatus;

namespace {

/// Streams fail with exceptions of their own; copies with the one that names a location.
template <class Open>
auto opened(const StorageIRI& location, const Open& open) {
  try {
    return open();
  } catch (const provider::ByteStreamFailure& failure) {
    throw provider::toException(failure, location);
  }
}

void requireDifferent(const struct stat& source, const struct stat& destination, const StorageIRI& location) {
  if (isSameFile(source, destination))
    throw refusal(ErrorCode::InvalidLocation, location, u"A file cannot be copied onto itself");
}

/// Opens what is there, empty. It is emptied only when it is known not to be the source.
OpenFile openExisting(const FileSystem& files, const StorageIRI& location, const OpenFile& source, mode_t mode) {
  auto file = opened(location, [&] { return openFile(files, location, O_WRONLY | O_CREAT, mode); });
  requireDifferent(source.status, file.status, location);
  if (file.status.st_size > 0 && sys().ftruncate(file.descriptor.get(), 0) == -1)
    throw systemFailure(errno, "ftruncate", location);
  return file;
}

OpenFile openDestination(const FileSystem& files, const StorageIRI& location, const OpenFile& source,
                         provider::ReplacementPolicy policy) {
  const mode_t mode = source.status.st_mode & 0777;
  // A new file, which is the usual case, needs no look at what it is.
  OpenFile file{files.open(nativePath(location), O_WRONLY | O_CREAT | O_EXCL | O_NOCTTY, mode), {}};
  file.status.st_mode = S_IFREG;
  if (file.descriptor.isOpen())
    return file;
  if (errno != EEXIST || preservesExisting(policy))
    throw systemFailure(errno, "open", location);
  return openExisting(files, location, source, mode);
}

/// Where the policy keeps what is there: before anything is copied; the rename sees to it once more.
void requireAbsent(const FileSystem& files, const StorageIRI& location) {
  struct stat status;
  if (files.status(nativePath(location), Links::Keep, status) == 0)
    throw systemFailure(EEXIST, "stat", location);
}

}  // namespace

void copyFile(const FileSystem& files, const StorageIRI& source, const StorageIRI& destination,
              provider::ReplacementPolicy policy) {
  const auto from = opened(source, [&] { return openFile(files, source, O_RDONLY); });
  auto to = openDestination(files, destination, from, policy);
  ContentCopy({from.descriptor.get(), source}, from.status, {to.descriptor.get(), destination},
              S_ISREG(to.status.st_mode))
      .run();
  if (const int error = to.descriptor.close())
    throw systemFailure(error, "close", destination);
}

TransactionStatus copyFileAtomically(const Configuration& configuration, const StorageIRI& source,
                                     const StorageIRI& destination, provider::ReplacementPolicy policy,
                                     const provider::InterruptCallback& goOn) {
  const auto& files = *configuration.files;
  const auto from = opened(source, [&] { return openFile(files, source, O_RDONLY); });
  if (preservesExisting(policy))
    requireAbsent(files, destination);
  auto target = findTransactionTarget(files, destination);
  if (target.replaced)
    requireDifferent(from.status, target.replaced->status, destination);
  return opened(destination, [&] {
    Replacement scratch(configuration, std::move(target), O_WRONLY | O_CREAT, from.status.st_mode & 0777);
    ContentCopy copy({from.descriptor.get(), source}, from.status, {scratch.descriptor(), destination});
    const bool isComplete = copy.run(goOn);
    if (isComplete)
      scratch.commit(policy);
    else
      scratch.abort();
    return isComplete ? TransactionStatus::Completed : TransactionStatus::Aborted;
  });
}

}  // namespace foundation::storage::backend::local::detail
