#include <foundation/storage/testing/FaultyProvider.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/testing/detail/Faulty.h>
#include <foundation/storage/testing/detail/Guarded.h>

#include <boost/property_tree/ptree.hpp>

#include <sstream>
#include <utility>

namespace foundation::storage::testing {

using provider::IProvider;

FaultyProvider::FaultyProvider(std::shared_ptr<IProvider> inner, std::shared_ptr<Faults> faults)
    : inner_(std::move(inner)), faults_(std::move(faults)) {}

FaultyProvider::~FaultyProvider() { endChangePolling(); }

template <class Call>
auto FaultyProvider::run(Operation operation, const StorageIRI& location, const Call& call) const {
  return detail::guardedAt(*faults_, operation, location, call);
}

FaultyProvider::Listing FaultyProvider::list(ListOperation operation, const StorageIRI& location,
                                             std::u16string wildcard) const {
  return run(Operation::List, location, [&]() -> Listing {
    return std::make_unique<detail::FaultyListing>((*inner_.*operation)(location, std::move(wildcard)), faults_,
                                                   location);
  });
}

void FaultyProvider::doCreateFile(const StorageIRI& location) const {
  run(Operation::CreateFile, location, [&] { return inner_->createFile(location); });
}

void FaultyProvider::doCreateFolder(const StorageIRI& location) const {
  run(Operation::CreateFolder, location, [&] { return inner_->createFolder(location); });
}

void FaultyProvider::doCreateFolderRecursive(const StorageIRI& location) const {
  run(Operation::CreateFolderRecursive, location, [&] { return inner_->createFolderRecursive(location); });
}

bool FaultyProvider::doFileExists(const StorageIRI& location) const {
  return run(Operation::FileExists, location, [&] { return inner_->fileExists(location); });
}

bool FaultyProvider::doFolderExists(const StorageIRI& location) const {
  return run(Operation::FolderExists, location, [&] { return inner_->folderExists(location); });
}

void FaultyProvider::doRemoveFile(const StorageIRI& location) const {
  run(Operation::RemoveFile, location, [&] { return inner_->removeFile(location); });
}

void FaultyProvider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                                const ReplacementPolicy& policy) const {
  run(Operation::MoveFile, source, [&] { return inner_->moveFile(source, destination, policy); });
}

void FaultyProvider::doRemoveFolder(const StorageIRI& location) const {
  run(Operation::RemoveFolder, location, [&] { return inner_->removeFolder(location); });
}

void FaultyProvider::doRemoveFolderRecursively(const StorageIRI& location) const {
  run(Operation::RemoveFolderRecursively, location, [&] { return inner_->removeFolderRecursively(location); });
}

void FaultyProvider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                                  const ReplacementPolicy& policy) const {
  run(Operation::MoveFolder, source, [&] { return inner_->moveFolder(source, destination, policy); });
}

provider::FileAttributes FaultyProvider::doGetFileAttributes(const StorageIRI& location) const {
  return run(Operation::GetFileAttributes, location, [&] { return inner_->getFileAttributes(location); });
}

provider::FolderAttributes FaultyProvider::doGetFolderAttributes(const StorageIRI& location) const {
  return run(Operation::GetFolderAttributes, location, [&] { return inner_->getFolderAttributes(location); });
}

std::unique_ptr<provider::ByteStream> FaultyProvider::doOpenStream(const StorageIRI& location,
                                                                   const Options& options) const {
  return run(Operation::OpenStream, location, [&]() -> std::unique_ptr<provider::ByteStream> {
    return std::make_unique<detail::FaultyStream<provider::ByteStream>>(inner_->openStream(location, options), faults_,
                                                                        location);
  });
}

std::unique_ptr<provider::ByteStream> FaultyProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return run(Operation::OpenReadOnlyStream, location, [&]() -> std::unique_ptr<provider::ByteStream> {
    return std::make_unique<detail::FaultyStream<provider::ByteStream>>(inner_->openReadOnlyStream(location), faults_,
                                                                        location);
  });
}

std::unique_ptr<provider::TransactionalStream> FaultyProvider::doOpenTransactionalStream(const StorageIRI& location,
                                                                                         const Options& options) const {
  return run(Operation::OpenTransactionalStream, location, [&]() -> std::unique_ptr<provider::TransactionalStream> {
    return std::make_unique<detail::FaultyTransaction>(inner_->openTransactionalStream(location, options), faults_,
                                                       location);
  });
}

FaultyProvider::Listing FaultyProvider::doListAll(const StorageIRI& location) const {
  return list(&IProvider::listAll, location);
}

FaultyProvider::Listing FaultyProvider::doListAllWildcards(const StorageIRI& location, std::u16string wildcard) const {
  return list(&IProvider::listAll, location, std::move(wildcard));
}

FaultyProvider::Listing FaultyProvider::doListFiles(const StorageIRI& location) const {
  return list(&IProvider::listFiles, location);
}

FaultyProvider::Listing FaultyProvider::doListFilesWildcards(const StorageIRI& location,
                                                             std::u16string wildcard) const {
  return list(&IProvider::listFiles, location, std::move(wildcard));
}

FaultyProvider::Listing FaultyProvider::doListFolders(const StorageIRI& location) const {
  return list(&IProvider::listFolders, location);
}

FaultyProvider::Listing FaultyProvider::doListFoldersWildcards(const StorageIRI& location,
                                                               std::u16string wildcard) const {
  return list(&IProvider::listFolders, location, std::move(wildcard));
}

FaultyProvider::Listing FaultyProvider::doListAllNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listAllNamesOnly, location);
}

FaultyProvider::Listing FaultyProvider::doListAllNamesOnlyWildcards(const StorageIRI& location,
                                                                    std::u16string wildcard) const {
  return list(&IProvider::listAllNamesOnly, location, std::move(wildcard));
}

FaultyProvider::Listing FaultyProvider::doListFoldersNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listFoldersNamesOnly, location);
}

FaultyProvider::Listing FaultyProvider::doListFoldersNamesOnlyWildcards(const StorageIRI& location,
                                                                        std::u16string wildcard) const {
  return list(&IProvider::listFoldersNamesOnly, location, std::move(wildcard));
}

FaultyProvider::Listing FaultyProvider::doListFilesNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listFilesNamesOnly, location);
}

FaultyProvider::Listing FaultyProvider::doListFilesNamesOnlyWildcards(const StorageIRI& location,
                                                                      std::u16string wildcard) const {
  return list(&IProvider::listFilesNamesOnly, location, std::move(wildcard));
}

FaultyProvider::Listing FaultyProvider::doListAllRecursive(const StorageIRI& location) const {
  return list(&IProvider::listAllRecursive, location);
}

FaultyProvider::Listing FaultyProvider::doListAllRecursiveWildcards(const StorageIRI& location,
                                                                    std::u16string wildcard) const {
  return list(&IProvider::listAllRecursive, location, std::move(wildcard));
}

FaultyProvider::Listing FaultyProvider::doListAllRecursiveNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listAllRecursiveNamesOnly, location);
}

FaultyProvider::Listing FaultyProvider::doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location,
                                                                             std::u16string wildcard) const {
  return list(&IProvider::listAllRecursiveNamesOnly, location, std::move(wildcard));
}

void FaultyProvider::doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                                const ReplacementPolicy& policy) const {
  run(Operation::CopyFile, source, [&] { return inner_->copyFile(source, destination, policy); });
}

provider::TransactionStatus FaultyProvider::doCopyFileAtomic(
    const StorageIRI& source, const StorageIRI& destination, const ReplacementPolicy& policy,
    const provider::InterruptCallback& interruptCallback) const {
  return run(Operation::CopyFileAtomic, source,
             [&] { return inner_->copyFileAtomic(source, destination, policy, interruptCallback); });
}

void FaultyProvider::doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime& time) const {
  run(Operation::SetLastModified, location, [&] { return inner_->setLastModified(location, time); });
}

void FaultyProvider::doSetWritable(const StorageIRI& location, bool writable) const {
  run(Operation::SetWritable, location, [&] { return inner_->setWritable(location, writable); });
}

void FaultyProvider::doPublishFolderEventsFor(const StorageIRI& location, const ChangeCallback& callback,
                                              const Kinds& kinds, provider::RecursiveFileWatching recursion) const {
  run(Operation::PublishEvents, location,
      [&] { inner_->publishFolderEventsFor(location, callback, kinds, recursion); });
}

void FaultyProvider::doPublishFileEventsFor(const StorageIRI& location, const ChangeCallback& callback,
                                            const Kinds& kinds) const {
  run(Operation::PublishEvents, location, [&] { inner_->publishFileEventsFor(location, callback, kinds); });
}

void FaultyProvider::doStopPublishingEventsFor(const StorageIRI& location) const {
  run(Operation::StopPublishEvents, location, [&] { inner_->stopPublishingFolderEventsFor(location); });
}

bool FaultyProvider::doHasFeature(const provider::ExtendedFeature& feature) const {
  return inner_->hasFeature(feature);
}

provider::PathComparator FaultyProvider::doGetPathComparator(const StorageIRI& location) const {
  return run(Operation::GetPathComparator, location, [&] { return inner_->getPathComparator(location); });
}

FaultyProvider::StorageIRI FaultyProvider::doGetCanonicalLocation(const StorageIRI& location) const {
  return run(Operation::GetCanonicalLocation, location, [&] { return inner_->getCanonicalLocation(location); });
}

provider::FilenameSensitivity FaultyProvider::doGetFilenameSensitivity(const StorageIRI& location) const {
  return run(Operation::GetFilenameSensitivity, location, [&] { return inner_->getFilenameSensitivity(location); });
}

void FaultyProvider::doShutdown() {
  run(Operation::Shutdown, StorageIRI(u"provider:/"), [&] { inner_->shutdown(); });
}

provider::ExistenceType FaultyProvider::doExists(const StorageIRI& location) const {
  return run(Operation::Exists, location, [&] { return inner_->exists(location); });
}

provider::ExistenceTypeExtended FaultyProvider::doExistsExtended(const StorageIRI& location) const {
  return run(Operation::ExistsExtended, location, [&] { return inner_->existsExtended(location); });
}

provider::ExtendedAttributes FaultyProvider::doGetExtendedAttributes(const StorageIRI& location) const {
  return run(Operation::GetExtendedAttributes, location, [&] { return inner_->getExtendedAttributes(location); });
}

provider::ProviderStorageInfo FaultyProvider::doGetProviderStorageInfo(const StorageIRI& location) const {
  return run(Operation::GetProviderStorageInfo, location, [&] { return inner_->getProviderStorageInfo(location); });
}

void FaultyProvider::doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const {
  run(Operation::TruncateToSize, location, [&] { return inner_->truncateToSize(location, newSize); });
}

provider::ProviderCacheUsage FaultyProvider::doGetProviderCacheUsage(const StorageIRI& location) const {
  return run(Operation::GetProviderCacheUsage, location, [&] { return inner_->getProviderCacheUsage(location); });
}

void FaultyProvider::doConfigure(boost::property_tree::ptree configuration) {
  run(Operation::Configure, StorageIRI(u"provider:/"), [&] {
    if (auto* inner = dynamic_cast<provider::IConfigurableProvider*>(inner_.get()))
      inner->configure(configuration);
  });
}

void FaultyProvider::doFlushFilesystem() {
  run(Operation::Flush, StorageIRI(u"provider:/"), [&] {
    if (auto* inner = dynamic_cast<provider::extensions::IFlushableFilesystem*>(inner_.get()))
      inner->flushFilesystem();
  });
}

void FaultyProvider::doInvalidate(const StorageIRI& location) {
  run(Operation::Invalidate, location, [&] {
    if (auto* inner = dynamic_cast<provider::extensions::IInvalidatable*>(inner_.get()))
      inner->invalidate(location);
  });
}

std::u16string FaultyProvider::doGetFileIdentity(const StorageIRI& location) const {
  return run(Operation::GetFileIdentity, location, [&] {
    const auto* inner = dynamic_cast<const provider::extensions::IFileIdentity*>(inner_.get());
    if (inner != nullptr)
      return inner->getFileIdentity(location);
    std::ostringstream store;
    store << "faulty:" << inner_.get() << ':';
    return fl::i18n::to_ustring(store.str()) + inner_->getCanonicalLocation(location).toString();
  });
}

}  // namespace foundation::storage::testing
