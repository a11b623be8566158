#include <foundation/storage/backend/local/detail/LocalProvider.h>

#include <fl/i18n/Case.h>
#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/detail/NativePath.h>
#include <foundation/storage/backend/local/detail/posix/Attributes.h>
#include <foundation/storage/backend/local/detail/posix/CaseRule.h>
#include <foundation/storage/backend/local/detail/posix/Copy.h>
#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/local/detail/posix/FolderListing.h>
#include <foundation/storage/backend/local/detail/posix/FolderRemoval.h>
#include <foundation/storage/backend/local/detail/posix/LocalByteStream.h>
#include <foundation/storage/backend/local/detail/posix/Move.h>
#include <foundation/storage/backend/local/detail/posix/OpenFile.h>
#include <foundation/storage/backend/local/detail/posix/Places.h>
#include <foundation/storage/backend/local/detail/posix/RecursiveListing.h>
#include <foundation/storage/backend/local/detail/posix/Replacement.h>
#include <foundation/storage/backend/local/detail/posix/Status.h>
#include <foundation/storage/backend/local/detail/posix/SystemCalls.h>
#include <foundation/storage/backend/local/detail/posix/TransactionTarget.h>
#include <foundation/storage/backend/local/detail/posix/Xattrs.h>
#include <foundation/storage/backend/support/FilteredListing.h>
#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/FailureConversion.h>
#include <foundation/storage/provider/GenericTransactionalStream.h>
#include <foundation/storage/provider/SafeByteStream.h>
#include <foundation/storage/provider/ScratchFiles.h>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <cerrno>
#include <cstdlib>
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

std::unique_ptr<ByteStream> openStreamWith(const FileSystem& files, const provider::StorageIRI& location, int flags) {
  return std::make_unique<LocalByteStream>(openFile(files, location, flags).descriptor, location);
}

ExistenceTypeExtended typeBehindLink(const FileSystem& files, const provider::StorageIRI& location,
                                     const std::string& path) {
  const auto status = findStatusBehindLink(files, location, path);
  if (!status)
    return ExistenceTypeExtended::BrokenSymlink;
  return S_ISDIR(status->st_mode) ? ExistenceTypeExtended::SymlinkToFolder : ExistenceTypeExtended::SymlinkToFile;
}

timespec toSystemTime(const boost::posix_time::ptime& time) {
  static const boost::posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
  constexpr std::int64_t second = 1'000'000;
  const auto microseconds = (time - epoch).total_microseconds();
  const auto rest = (microseconds % second + second) % second;
  return {(microseconds - rest) / second, rest * 1000};
}

/// The kernel follows links on its own terms, so that a confined provider can only be polled for changes.
void requireWhole(const FileSystem& files, const provider::StorageIRI& location) {
  if (!files.isWhole())
    throw provider::ChangeEventsNotSupportedException(location);
}

OpenFile openForTruncation(const FileSystem& files, const provider::StorageIRI& location) {
  try {
    return openFile(files, location, O_WRONLY);
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

Configuration LocalProvider::configuration() const {
  const std::scoped_lock lock(mutex_);
  return configuration_;
}

void LocalProvider::doConfigure(boost::property_tree::ptree configuration) {
  auto next = readConfiguration(std::move(configuration));
  const std::scoped_lock lock(mutex_);
  configuration_ = std::move(next);
}

void LocalProvider::doCreateFile(const StorageIRI& location) const {
  auto file = files()->open(nativePath(location), O_WRONLY | O_CREAT | O_EXCL, 0666);
  if (!file.isOpen())
    throw systemFailure(errno, "open", location);
  if (const int error = file.close())
    throw systemFailure(error, "close", location);
}

void LocalProvider::doCreateFolder(const StorageIRI& location) const {
  const auto place = requirePlace(*files(), location, "mkdir");
  if (sys().mkdirat(place.folder, place.name.c_str(), 0777) == -1)
    throw systemFailure(errno, "mkdir", location);
}

bool LocalProvider::doFileExists(const StorageIRI& location) const {
  return doExists(location) == ExistenceType::AsFile;
}

bool LocalProvider::doFolderExists(const StorageIRI& location) const {
  return doExists(location) == ExistenceType::AsFolder;
}

void LocalProvider::doRemoveFile(const StorageIRI& location) const {
  const auto place = requirePlace(*files(), location, "unlink");
  if (sys().unlinkat(place.folder, place.name.c_str(), 0) == -1)
    throw systemFailure(errno, "unlink", location);
}

void LocalProvider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                               const ReplacementPolicy& policy) const {
  moveEntry(configuration(), source, destination, policy, MovedEntry::File);
}

void LocalProvider::doRemoveFolder(const StorageIRI& location) const {
  const auto place = requirePlace(*files(), location, "rmdir");
  if (sys().unlinkat(place.folder, place.name.c_str(), AT_REMOVEDIR) == -1)
    throw systemFailure(errno == EEXIST ? ENOTEMPTY : errno, "rmdir", location);
}

void LocalProvider::doRemoveFolderRecursively(const StorageIRI& location) const {
  removeFolderTree(*files(), location, nativePath(location));
}

void LocalProvider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                                 const ReplacementPolicy& policy) const {
  moveEntry(configuration(), source, destination, policy, MovedEntry::Folder);
}

provider::FileAttributes LocalProvider::doGetFileAttributes(const StorageIRI& location) const {
  const EntryQuestion entry{files(), nativePath(location)};
  const auto status = requireStatus(*entry.files, location, entry.path);
  if (S_ISDIR(status.st_mode))
    throw systemFailure(EISDIR, "stat", location);
  auto attributes = fileAttributes(status, entry);
  return attributes.withHiddenAttribute(isHidden(entry.path)).withSymlinkStatusAttribute(linkQuestion(entry));
}

provider::FolderAttributes LocalProvider::doGetFolderAttributes(const StorageIRI& location) const {
  const EntryQuestion entry{files(), nativePath(location)};
  const auto status = requireStatus(*entry.files, location, entry.path);
  if (!S_ISDIR(status.st_mode))
    throw systemFailure(ENOTDIR, "stat", location);
  auto attributes = folderAttributes(status, entry);
  return attributes.withHiddenAttribute(isHidden(entry.path)).withSymlinkStatusAttribute(linkQuestion(entry));
}

std::unique_ptr<ByteStream> LocalProvider::doOpenStream(const StorageIRI& location,
                                                        const ByteStreamOpenOptions& options) const {
  return openStreamWith(*files(), location, openFlags(options));
}

std::unique_ptr<ByteStream> LocalProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return openStreamWith(*files(), location, O_RDONLY);
}

std::unique_ptr<TransactionalStream> LocalProvider::doOpenTransactionalStream(
    const StorageIRI& location, const ByteStreamOpenOptions& options) const {
  auto settings = configuration();
  auto target = findTransactionTarget(*settings.files, location);
  const auto scratch = std::make_shared<Replacement>(std::move(settings), std::move(target), openFlags(options));
  auto bytes = std::make_unique<LocalByteStream>(scratch->descriptor(), scratch->scratchLocation());
  const bool isReadable = options.access == ByteStreamAccess::ReadWrite;
  std::shared_ptr<ByteStream> stream = std::make_shared<provider::SafeByteStream>(std::move(bytes), isReadable, true);
  const auto finish = [scratch](const StreamClosePolicy& policy) {
    if (policy == StreamClosePolicy::Commit)
      scratch->commit(ReplacementPolicy::Overwrite);
    else
      scratch->abort();
  };
  return std::make_unique<provider::GenericTransactionalStream<ByteStream>>(std::move(stream), finish);
}

LocalProvider::Listing LocalProvider::filtered(const StorageIRI& location, Listing listing,
                                               const std::u16string& wildcard) const {
  const auto rule = caseRuleAt(*files(), nativePath(location));
  return std::make_unique<support::FilteredListing>(std::move(listing), support::Wildcard(wildcard, rule));
}

LocalProvider::Listing LocalProvider::doListAll(const StorageIRI& location) const {
  return std::make_unique<FolderListing>(configuration(), location, EntryFilter::All, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListAllWildcards(const StorageIRI& location, std::u16string wildcard) const {
  return filtered(location, doListAll(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFiles(const StorageIRI& location) const {
  return std::make_unique<FolderListing>(configuration(), location, EntryFilter::Files, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListFilesWildcards(const StorageIRI& location, std::u16string wildcard) const {
  return filtered(location, doListFiles(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFolders(const StorageIRI& location) const {
  return std::make_unique<FolderListing>(configuration(), location, EntryFilter::Folders, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListFoldersWildcards(const StorageIRI& location,
                                                             std::u16string wildcard) const {
  return filtered(location, doListFolders(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListAllNamesOnly(const StorageIRI& location) const {
  return std::make_unique<FolderListing>(configuration(), location, EntryFilter::All, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListAllNamesOnlyWildcards(const StorageIRI& location,
                                                                  std::u16string wildcard) const {
  return filtered(location, doListAllNamesOnly(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFoldersNamesOnly(const StorageIRI& location) const {
  return std::make_unique<FolderListing>(configuration(), location, EntryFilter::Folders, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListFoldersNamesOnlyWildcards(const StorageIRI& location,
                                                                      std::u16string wildcard) const {
  return filtered(location, doListFoldersNamesOnly(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListFilesNamesOnly(const StorageIRI& location) const {
  return std::make_unique<FolderListing>(configuration(), location, EntryFilter::Files, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListFilesNamesOnlyWildcards(const StorageIRI& location,
                                                                    std::u16string wildcard) const {
  return filtered(location, doListFilesNamesOnly(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListAllRecursive(const StorageIRI& location) const {
  return std::make_unique<RecursiveListing>(configuration(), location, EntryDetail::Attributes);
}

LocalProvider::Listing LocalProvider::doListAllRecursiveWildcards(const StorageIRI& location,
                                                                  std::u16string wildcard) const {
  return filtered(location, doListAllRecursive(location), wildcard);
}

LocalProvider::Listing LocalProvider::doListAllRecursiveNamesOnly(const StorageIRI& location) const {
  return std::make_unique<RecursiveListing>(configuration(), location, EntryDetail::NamesOnly);
}

LocalProvider::Listing LocalProvider::doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location,
                                                                           std::u16string wildcard) const {
  return filtered(location, doListAllRecursiveNamesOnly(location), wildcard);
}

void LocalProvider::doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const {
  auto file = openForTruncation(*files(), location);
  if (newSize > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()))
    throw systemFailure(EFBIG, "ftruncate", location);
  const auto size = static_cast<off_t>(newSize);
  if (sys().ftruncate(file.descriptor.get(), size) == -1)
    throw systemFailure(errno, "ftruncate", location);
  if (const int error = file.descriptor.close())
    throw systemFailure(error, "close", location);
}

void LocalProvider::doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                               const ReplacementPolicy& policy) const {
  detail::copyFile(*files(), source, destination, policy);
}

provider::TransactionStatus LocalProvider::doCopyFileAtomic(
    const StorageIRI& source, const StorageIRI& destination, const ReplacementPolicy& policy,
    const provider::InterruptCallback& interruptCallback) const {
  return copyFileAtomically(configuration(), source, destination, policy, interruptCallback);
}

void LocalProvider::doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const {
  if (time.is_special())
    throw refusal(provider::ErrorCode::UnsupportedOperation, location, u"This is no point in time");
  const auto reached = requireReached(*files(), location);
  const timespec times[] = {{0, UTIME_OMIT}, toSystemTime(time)};
  struct stat status;
  if (sys().utimensat(AT_FDCWD, reached.path.c_str(), times, 0) == -1)
    throw systemFailure(errno, "utimensat", location);
  if (sys().fstatat(AT_FDCWD, reached.path.c_str(), &status, 0) == -1)
    throw systemFailure(errno, "stat", location);
  constexpr std::int64_t coarsest = 2;  // seconds: what some file systems round to
  if (std::abs(status.st_mtim.tv_sec - times[1].tv_sec) > coarsest)
    throw refusal(provider::ErrorCode::UnsupportedOperation, location, u"The file system cannot keep such a time");
}

void LocalProvider::doSetWritable(const StorageIRI& location, bool writable) const {
  constexpr mode_t ofOwner = 0200;
  constexpr mode_t ofAll = 0222;
  const auto reached = requireReached(*files(), location);
  struct stat status;
  if (sys().fstatat(AT_FDCWD, reached.path.c_str(), &status, 0) == -1)
    throw systemFailure(errno, "stat", location);
  const mode_t mode = status.st_mode & 07777;
  if (sys().chmod(reached.path.c_str(), writable ? mode | ofOwner : mode & ~ofAll) == -1)
    throw systemFailure(errno, "chmod", location);
}

bool LocalProvider::doHasFeature(const provider::ExtendedFeature& feature) const {
  return feature == provider::ExtendedFeature::RecursiveFolderRemoval ||
         feature == provider::ExtendedFeature::AtomicFileCopy;
}

provider::PathComparator LocalProvider::doGetPathComparator(const StorageIRI& location) const {
  using provider::CaseModifier;
  return [rule = caseRuleAt(*files(), nativePath(location))](const std::u16string& a, const std::u16string& b,
                                                             CaseModifier modifier) {
    if ((modifier == CaseModifier::None ? rule : modifier) != CaseModifier::InSensitive)
      return a == b;
    const fl::i18n::to_lower lower;
    return fl::i18n::detail::transform(a, lower) == fl::i18n::detail::transform(b, lower);
  };
}

provider::FilenameSensitivity LocalProvider::doGetFilenameSensitivity(const StorageIRI& location) const {
  const bool isSensitive = caseRuleAt(*files(), nativePath(location)) == provider::CaseModifier::Sensitive;
  return {.isCaseSensitive = isSensitive, .isCasePreserving = true};
}

provider::ExtendedAttributes LocalProvider::doGetExtendedAttributes(const StorageIRI& location) const {
  const auto reached = requireReached(*files(), location);
  std::map<std::string, boost::any> attributes;
  for (const auto& name : attributeNames(reached.path, location)) {
    auto value = name.starts_with("user.") ? attributeValue(reached.path, name, location) : std::nullopt;
    if (value)
      attributes.emplace(name, *std::move(value));
  }
  return provider::ExtendedAttributes(std::move(attributes));
}

provider::ProviderStorageInfo LocalProvider::doGetProviderStorageInfo(const StorageIRI& location) const {
  const auto reached = requireReached(*files(), location);
  struct statvfs status;
  if (sys().statvfs(reached.path.c_str(), &status) == -1)
    throw systemFailure(errno, "statvfs", location);
  return provider::ProviderStorageInfo()
      .withStorageCapacity(status.f_blocks * status.f_frsize)
      .withSpaceOccupied((status.f_blocks - status.f_bfree) * status.f_frsize);
}

provider::StorageIRI LocalProvider::doGetCanonicalLocation(const StorageIRI& location) const {
  const auto path = files()->canonical(nativePath(location));
  if (!path)
    throw systemFailure(errno, "realpath", location);
  return toLocation(location, *path);
}

ExistenceType LocalProvider::doExists(const StorageIRI& location) const {
  const auto status = findStatus(*files(), location, nativePath(location), Links::Follow);
  if (!status)
    return ExistenceType::AsNeither;
  return S_ISDIR(status->st_mode) ? ExistenceType::AsFolder : ExistenceType::AsFile;
}

ExistenceTypeExtended LocalProvider::doExistsExtended(const StorageIRI& location) const {
  const auto path = nativePath(location);
  const auto view = files();
  const auto status = findStatus(*view, location, path, Links::Keep);
  if (!status)
    return ExistenceTypeExtended::None;
  if (S_ISLNK(status->st_mode))
    return typeBehindLink(*view, location, path);
  if (S_ISDIR(status->st_mode))
    return ExistenceTypeExtended::RegularFolder;
  return S_ISREG(status->st_mode) ? ExistenceTypeExtended::RegularFile : ExistenceTypeExtended::SpecialFile;
}

std::u16string LocalProvider::doGetFileIdentity(const StorageIRI& location) const {
  const auto status = requireStatus(*files(), location, nativePath(location));
  return fl::i18n::to_ustring("local:" + std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino));
}

void LocalProvider::doPublishFolderEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                             const std::vector<events::Kind>& kinds,
                                             provider::RecursiveFileWatching recursion) const {
  requireWhole(*files(), location);
  changes_.watchFolder(location, callback, kinds, recursion);
}

void LocalProvider::doPublishFileEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                           const std::vector<events::Kind>& kinds) const {
  requireWhole(*files(), location);
  changes_.watchFile(location, callback, kinds);
}

void LocalProvider::doStopPublishingEventsFor(const StorageIRI& location) const { changes_.stop(location); }

}  // namespace foundation::storage::backend::local::detail
