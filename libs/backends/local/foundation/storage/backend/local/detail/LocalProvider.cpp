#include <foundation/storage/backend/local/detail/LocalProvider.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Attributes.h>
#include <foundation/storage/backend/local/detail/posix/Copy.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/FolderListing.h>
#include <foundation/storage/backend/local/detail/posix/LocalByteStream.h>
#include <foundation/storage/backend/local/detail/posix/Move.h>
#include <foundation/storage/backend/local/detail/posix/OpenFile.h>
#include <foundation/storage/backend/local/detail/posix/RealPath.h>
#include <foundation/storage/backend/local/detail/posix/RecursiveListing.h>
#include <foundation/storage/backend/local/detail/posix/Retry.h>
#include <foundation/storage/backend/local/detail/posix/ScratchFile.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>
#include <foundation/storage/backend/local/detail/posix/TransactionTarget.h>
#include <foundation/storage/backend/support/FilteredListing.h>
#include <foundation/storage/provider/FailureConversion.h>
#include <foundation/storage/provider/GenericTransactionalStream.h>
#include <foundation/storage/provider/SafeByteStream.h>
#include <foundation/storage/provider/ScratchFiles.h>

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <string>
#include <unistd.h>

namespace foundation::storage::backend::local::detail {

using provider::ByteStream;
using provider::ByteStreamAccess;
using provider::ByteStreamAppend;
using provider::ByteStreamCreate;
using provider::ByteStreamOpenOptions;
using provider::ByteStreamTruncate;
using provider::ExistenceType;
using provider::ExistenceTypeExtended;
using provider::StreamClosePolicy;
using provider::TransactionalStream;

namespace {

int openFlags(const ByteStreamOpenOptions& options) {
  return (options.access == ByteStreamAccess::WriteOnly ? O_WRONLY : O_RDWR) |
         (options.create == ByteStreamCreate::Create ? O_CREAT : 0) |
         (options.truncate == ByteStreamTruncate::TruncateExisting ? O_TRUNC : 0) |
         (options.append == ByteStreamAppend::Append ? O_APPEND : 0);
}

std::unique_ptr<ByteStream> openStreamWith(const provider::StorageIRI& location, int flags) {
  return std::make_unique<LocalByteStream>(openFile(location, flags).descriptor, location);
}

std::unique_ptr<FolderListing> list(const provider::StorageIRI& location, EntryFilter filter, EntryDetail detail) {
  return std::make_unique<FolderListing>(location, filter, detail);
}

provider::IProvider::Listing filtered(provider::IProvider::Listing listing, const std::u16string& wildcard) {
  return std::make_unique<support::FilteredListing>(std::move(listing), support::Wildcard(wildcard));
}

ExistenceTypeExtended typeBehindLink(const provider::StorageIRI& location, const std::string& path) {
  const auto status = findStatus(location, path);
  if (!status)
    return ExistenceTypeExtended::BrokenSymlink;
  return S_ISDIR(status->st_mode) ? ExistenceTypeExtended::SymlinkToFolder : ExistenceTypeExtended::SymlinkToFile;
}

OpenFile openForTruncation(const provider::StorageIRI& location) {
  try {
    return openFile(location, O_WRONLY);
  } catch (const provider::ByteStreamFailure& failure) {
    throw provider::toException(failure, location);
  }
}

bool isHidden(const std::string& path) { return isHiddenName(path.substr(path.rfind('/') + 1)); }

}  // namespace

LocalProvider::LocalProvider() = default;

LocalProvider::~LocalProvider() {
  endChangePolling();
  changes_.end();  // callbacks may still use this object
}

void LocalProvider::doCreateFile(const StorageIRI& location) const {
  const auto path = nativePath(location);
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  Descriptor file(retried([&] { return open(path.c_str(), flags, 0666); }));
  if (!file.isOpen())
    throw systemFailure(errno, "open", location);
  if (const int error = file.close())
    throw systemFailure(error, "close", location);
}

void LocalProvider::doCreateFolder(const StorageIRI& location) const {
  if (mkdir(nativePath(location).c_str(), 0777) == -1)
    throw systemFailure(errno, "mkdir", location);
}

bool LocalProvider::doFileExists(const StorageIRI& location) const {
  return doExists(location) == ExistenceType::AsFile;
}

bool LocalProvider::doFolderExists(const StorageIRI& location) const {
  return doExists(location) == ExistenceType::AsFolder;
}

void LocalProvider::doRemoveFile(const StorageIRI& location) const {
  if (unlink(nativePath(location).c_str()) == -1)
    throw systemFailure(errno, "unlink", location);
}

void LocalProvider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                               const ReplacementPolicy& policy) const {
  moveEntry(source, destination, policy, MovedEntry::File);
}

void LocalProvider::doRemoveFolder(const StorageIRI& location) const {
  if (rmdir(nativePath(location).c_str()) == -1)
    throw systemFailure(errno == EEXIST ? ENOTEMPTY : errno, "rmdir", location);
}

void LocalProvider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                                 const ReplacementPolicy& policy) const {
  moveEntry(source, destination, policy, MovedEntry::Folder);
}

provider::FileAttributes LocalProvider::doGetFileAttributes(const StorageIRI& location) const {
  const auto path = nativePath(location);
  const auto status = requireStatus(location, path);
  if (S_ISDIR(status.st_mode))
    throw systemFailure(EISDIR, "stat", location);
  auto attributes = fileAttributes(status, path);
  return attributes.withHiddenAttribute(isHidden(path)).withSymlinkStatusAttribute(linkQuestion(path));
}

provider::FolderAttributes LocalProvider::doGetFolderAttributes(const StorageIRI& location) const {
  const auto path = nativePath(location);
  const auto status = requireStatus(location, path);
  if (!S_ISDIR(status.st_mode))
    throw systemFailure(ENOTDIR, "stat", location);
  auto attributes = folderAttributes(status, path);
  return attributes.withHiddenAttribute(isHidden(path)).withSymlinkStatusAttribute(linkQuestion(path));
}

std::unique_ptr<ByteStream> LocalProvider::doOpenStream(const StorageIRI& location,
                                                        const ByteStreamOpenOptions& options) const {
  return openStreamWith(location, openFlags(options));
}

std::unique_ptr<ByteStream> LocalProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return openStreamWith(location, O_RDONLY);
}

std::unique_ptr<TransactionalStream> LocalProvider::doOpenTransactionalStream(
    const StorageIRI& location, const ByteStreamOpenOptions& options) const {
  const auto target = findTransactionTarget(location);
  const StorageIRI scratchLocation(target.location.getParent(), provider::makeScratchName());
  ScratchFile scratch(scratchLocation, openFlags(options), target.permissions);
  auto bytes = std::make_unique<LocalByteStream>(scratch.takeDescriptor(), scratchLocation);
  const bool isReadable = options.access == ByteStreamAccess::ReadWrite;
  std::shared_ptr<ByteStream> stream = std::make_shared<provider::SafeByteStream>(std::move(bytes), isReadable, true);
  const auto finish = [this, scratchLocation, destination = target.location](const StreamClosePolicy& policy) {
    if (policy == StreamClosePolicy::Commit)
      doMoveFile(scratchLocation, destination, ReplacementPolicy::Overwrite);
    else
      doRemoveFile(scratchLocation);
  };
  using Transaction = provider::GenericTransactionalStream<ByteStream>;
  auto transaction = std::make_unique<Transaction>(std::move(stream), finish);
  scratch.keep();  // it is the transaction's to end
  return transaction;
}

LocalProvider::Listing LocalProvider::doListAll(const StorageIRI& location) const {
  return list(location, EntryFilter::All, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListAllWildcards(const StorageIRI& location, std::u16string wildcard) const {
  return filtered(doListAll(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFiles(const StorageIRI& location) const {
  return list(location, EntryFilter::Files, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListFilesWildcards(const StorageIRI& location, std::u16string wildcard) const {
  return filtered(doListFiles(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFolders(const StorageIRI& location) const {
  return list(location, EntryFilter::Folders, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListFoldersWildcards(const StorageIRI& location,
                                                             std::u16string wildcard) const {
  return filtered(doListFolders(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListAllNamesOnly(const StorageIRI& location) const {
  return list(location, EntryFilter::All, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListAllNamesOnlyWildcards(const StorageIRI& location,
                                                                  std::u16string wildcard) const {
  return filtered(doListAllNamesOnly(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFoldersNamesOnly(const StorageIRI& location) const {
  return list(location, EntryFilter::Folders, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListFoldersNamesOnlyWildcards(const StorageIRI& location,
                                                                      std::u16string wildcard) const {
  return filtered(doListFoldersNamesOnly(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFilesNamesOnly(const StorageIRI& location) const {
  return list(location, EntryFilter::Files, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListFilesNamesOnlyWildcards(const StorageIRI& location,
                                                                    std::u16string wildcard) const {
  return filtered(doListFilesNamesOnly(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListAllRecursive(const StorageIRI& location) const {
  return std::make_unique<RecursiveListing>(location, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListAllRecursiveWildcards(const StorageIRI& location,
                                                                  std::u16string wildcard) const {
  return filtered(doListAllRecursive(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListAllRecursiveNamesOnly(const StorageIRI& location) const {
  return std::make_unique<RecursiveListing>(location, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location,
                                                                           std::u16string wildcard) const {
  return filtered(doListAllRecursiveNamesOnly(location), wildcard);
}

void LocalProvider::doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const {
  auto file = openForTruncation(location);
  if (newSize > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()))
    throw systemFailure(EFBIG, "ftruncate", location);
  const auto size = static_cast<off_t>(newSize);
  if (retried([&] { return ftruncate(file.descriptor.get(), size); }) == -1)
    throw systemFailure(errno, "ftruncate", location);
  if (const int error = file.descriptor.close())
    throw systemFailure(error, "close", location);
}

void LocalProvider::doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                               const ReplacementPolicy& policy) const {
  copyContent(source, destination, policy);
}

provider::StorageIRI LocalProvider::doGetCanonicalLocation(const StorageIRI& location) const {
  return toLocation(location, realPath(location, nativePath(location)));
}

ExistenceType LocalProvider::doExists(const StorageIRI& location) const {
  const auto status = findStatus(location, nativePath(location));
  if (!status)
    return ExistenceType::AsNeither;
  return S_ISDIR(status->st_mode) ? ExistenceType::AsFolder : ExistenceType::AsFile;
}

ExistenceTypeExtended LocalProvider::doExistsExtended(const StorageIRI& location) const {
  const auto path = nativePath(location);
  const auto status = findLinkStatus(location, path);
  if (!status)
    return ExistenceTypeExtended::None;
  if (S_ISLNK(status->st_mode))
    return typeBehindLink(location, path);
  if (S_ISDIR(status->st_mode))
    return ExistenceTypeExtended::RegularFolder;
  return S_ISREG(status->st_mode) ? ExistenceTypeExtended::RegularFile : ExistenceTypeExtended::SpecialFile;
}

std::u16string LocalProvider::doGetFileIdentity(const StorageIRI& location) const {
  const auto status = requireStatus(location, nativePath(location));
  return fl::i18n::to_ustring("local:" + std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino));
}

void LocalProvider::doPublishFolderEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                             const std::vector<events::Kind>& kinds,
                                             provider::RecursiveFileWatching recursion) const {
  changes_.watchFolder(location, callback, kinds, recursion);
}

void LocalProvider::doPublishFileEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                           const std::vector<events::Kind>& kinds) const {
  changes_.watchFile(location, callback, kinds);
}

void LocalProvider::doStopPublishingEventsFor(const StorageIRI& location) const { changes_.stop(location); }

}  // namespace foundation::storage::backend::local::detail
