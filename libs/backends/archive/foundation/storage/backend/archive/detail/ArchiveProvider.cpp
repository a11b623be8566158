#include <foundation/storage/backend/archive/detail/ArchiveProvider.h>

#include <foundation/storage/backend/archive/detail/Failure.h>
#include <foundation/storage/backend/archive/detail/FileCopy.h>
#include <foundation/storage/backend/archive/detail/StagedStream.h>
#include <foundation/storage/backend/support/EntryTree.h>
#include <foundation/storage/provider/GenericTransactionalStream.h>
#include <foundation/storage/provider/SafeByteStream.h>

#include <utility>

namespace foundation::storage::backend::archive::detail {

using provider::ByteStream;
using provider::ByteStreamOpenFailure;
using provider::ByteStreamOpenOptions;
using provider::ErrorCode;
using provider::ExistenceType;
using provider::ExistenceTypeExtended;
using provider::ExtendedFeature;

namespace {

StagedStream::Mode modeOf(const ByteStreamOpenOptions& options) {
  return options.append == provider::ByteStreamAppend::Append ? StagedStream::Mode::Appending
                                                              : StagedStream::Mode::Positioned;
}

constexpr std::uint32_t newFilePermissions = 0644;

/// Opening fails as a stream does.
template <class Open>
std::unique_ptr<ByteStream> opened(const provider::StorageIRI& location, const Open& open) {
  try {
    return open();
  } catch (const provider::Exception& refused) {
    const auto contexts = refused.getAllExceptionContexts();
    const auto reason = contexts.front().getExceptionContextInfo()->getProviderMessage();
    ByteStreamOpenFailure failure(fl::i18n::to_string(location.toString() + u": " + reason), refused.getErrorCode());
    failure.setExceptionContexts(contexts);
    throw failure;
  }
}

}  // namespace

Place ArchiveProvider::place(const StorageIRI& location) const {
  auto found = placeOf(location);
  archive_->requireHere(location);
  return found;
}

void ArchiveProvider::doCreateFile(const StorageIRI& location) const { archive_->createFile(place(location)); }
void ArchiveProvider::doCreateFolder(const StorageIRI& location) const { archive_->createFolder(place(location)); }

void ArchiveProvider::doCreateFolderRecursive(const StorageIRI& location) const {
  archive_->createFolders(place(location));
}

bool ArchiveProvider::doFileExists(const StorageIRI& location) const {
  return doExists(location) == ExistenceType::AsFile;
}

bool ArchiveProvider::doFolderExists(const StorageIRI& location) const {
  return doExists(location) == ExistenceType::AsFolder;
}

ExistenceType ArchiveProvider::doExists(const StorageIRI& location) const {
  switch (archive_->existence(place(location))) {
    case ExistenceTypeExtended::RegularFile:
    case ExistenceTypeExtended::SpecialFile:
    case ExistenceTypeExtended::SymlinkToFile:
      return ExistenceType::AsFile;
    case ExistenceTypeExtended::RegularFolder:
    case ExistenceTypeExtended::SymlinkToFolder:
      return ExistenceType::AsFolder;
    default:
      return ExistenceType::AsNeither;
  }
}

ExistenceTypeExtended ArchiveProvider::doExistsExtended(const StorageIRI& location) const {
  return archive_->existence(place(location));
}

void ArchiveProvider::doRemoveFile(const StorageIRI& location) const {
  archive_->remove(place(location), FileOrFolder::File);
}

void ArchiveProvider::doRemoveFolder(const StorageIRI& location) const {
  archive_->remove(place(location), FileOrFolder::Folder);
}

void ArchiveProvider::doRemoveFolderRecursively(const StorageIRI& location) const {
  archive_->removeRecursively(place(location));
}

void ArchiveProvider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                                 const ReplacementPolicy& policy) const {
  archive_->move(place(source), place(destination), policy, FileOrFolder::File);
}

void ArchiveProvider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                                   const ReplacementPolicy& policy) const {
  archive_->move(place(source), place(destination), policy, FileOrFolder::Folder);
}

provider::FileAttributes ArchiveProvider::doGetFileAttributes(const StorageIRI& location) const {
  return archive_->fileAttributes(place(location));
}

provider::FolderAttributes ArchiveProvider::doGetFolderAttributes(const StorageIRI& location) const {
  return archive_->folderAttributes(place(location));
}

std::unique_ptr<ByteStream> ArchiveProvider::doOpenStream(const StorageIRI& location,
                                                          const ByteStreamOpenOptions& options) const {
  return opened(location, [&] {
    auto writing = archive_->beginWriting(place(location), options.create, options.truncate);
    return std::make_unique<StagedStream>(std::move(writing), modeOf(options), archive_, location);
  });
}

std::unique_ptr<ByteStream> ArchiveProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return opened(location, [&] { return archive_->read(place(location)); });
}

std::unique_ptr<provider::TransactionalStream> ArchiveProvider::doOpenTransactionalStream(
    const StorageIRI& location, const ByteStreamOpenOptions& options) const {
  constexpr auto policy = ReplacementPolicy::Overwrite;
  const auto target = place(location);
  archive_->requireCanPut(target, policy, nullptr);
  const auto content = std::make_shared<StagedContent>();
  auto bytes = std::make_unique<StagedStream>(std::make_unique<StagedContent::Writing>(content), modeOf(options),
                                              nullptr, location);
  const bool isReadable = options.access == provider::ByteStreamAccess::ReadWrite;
  std::shared_ptr<ByteStream> stream = std::make_shared<provider::SafeByteStream>(std::move(bytes), isReadable, true);
  const auto finish = [archive = archive_, content, target](const provider::StreamClosePolicy& how) {
    if (how == provider::StreamClosePolicy::Commit)
      archive->put({content, nullptr, 0, std::nullopt, newFilePermissions}, target, policy, nullptr);
  };
  return std::make_unique<provider::GenericTransactionalStream<ByteStream>>(std::move(stream), finish);
}

ArchiveProvider::Listing ArchiveProvider::list(const StorageIRI& location, const support::ListingScope& scope) const {
  return std::make_unique<support::EntryTree>(
      [archive = archive_, folder = place(location), scope] { return archive->list(folder, scope); });
}

void ArchiveProvider::doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                                 const ReplacementPolicy& policy) const {
  copyAside(*archive_, place(source), place(destination), policy, nullptr);
}

provider::TransactionStatus ArchiveProvider::doCopyFileAtomic(
    const StorageIRI& source, const StorageIRI& destination, const ReplacementPolicy& policy,
    const provider::InterruptCallback& interruptCallback) const {
  return copyAside(*archive_, place(source), place(destination), policy, interruptCallback);
}

void ArchiveProvider::doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const {
  if (time.is_special())
    throw refusal(ErrorCode::UnsupportedOperation, location, u"This is no point in time");
  archive_->setLastModified(place(location), time);
}

void ArchiveProvider::doSetWritable(const StorageIRI& location, bool writable) const {
  archive_->setWritable(place(location), writable);
}

bool ArchiveProvider::doHasFeature(const ExtendedFeature& feature) const {
  return archive_->isWritten() &&
         (feature == ExtendedFeature::RecursiveFolderRemoval || feature == ExtendedFeature::AtomicFileCopy);
}

provider::StorageIRI ArchiveProvider::doGetCanonicalLocation(const StorageIRI& location) const {
  std::u16string path;
  for (const auto& name : place(location).names)
    path += u"/" + name;
  return path.empty() ? archive_->root() : StorageIRI(archive_->root(), path);
}

provider::ProviderStorageInfo ArchiveProvider::doGetProviderStorageInfo(const StorageIRI& location) const {
  return archive_->storageInfo(place(location));
}

void ArchiveProvider::doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const {
  const auto writing = archive_->beginWriting(place(location), provider::ByteStreamCreate::NeverCreate,
                                              provider::ByteStreamTruncate::PreserveExisting);
  at(location, [&] { writing->content()->resize(newSize); });
  archive_->noteWritten(location);
}

void ArchiveProvider::doConfigure(boost::property_tree::ptree configuration) {
  archive_->configure(readConfiguration(std::move(configuration)));
}

std::u16string ArchiveProvider::doGetFileIdentity(const StorageIRI& location) const {
  return archive_->identity(place(location));
}

void ArchiveProvider::doInvalidate(const StorageIRI& /*location*/) { archive_->invalidate(); }

}  // namespace foundation::storage::backend::archive::detail
