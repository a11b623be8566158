#include <foundation/storage/provider/StorageItem.h>

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/InvalidateProvider.h>
#include <foundation/storage/provider/detail/SelfCopy.h>
#include <foundation/storage/provider/detail/StreamCopy.h>
#include <foundation/storage/provider/extensions/IFlushableFilesystem.h>
#include <foundation/storage/provider/extensions/IInvalidatable.h>

#include <utility>

namespace foundation::storage::provider {
StorageItem::StorageItem(std::shared_ptr<IProvider> provider, StorageIRI location)
    : provider_(std::move(provider)), location_(std::move(location)) {}

StorageItem::StorageItem(const StorageItem& parent, StorageIRI location)
    : provider_(parent.provider_), location_(std::move(location)) {}

StorageItem::StorageItem(const StorageItem& parent, const std::u16string& childName)
    : provider_(parent.provider_), location_(parent.location_, childName) {}

bool StorageItem::operator==(const StorageItem& other) const {
  return hasSameProviderInstance(other) && location_ == other.location_;
}

bool StorageItem::fileExists() const { return provider_->fileExists(location_); }
bool StorageItem::folderExists() const { return provider_->folderExists(location_); }
ExistenceType StorageItem::exists() const { return provider_->exists(location_); }
ExistenceTypeExtended StorageItem::existsExtended() const { return provider_->existsExtended(location_); }
void StorageItem::createFile() const { provider_->createFile(location_); }
void StorageItem::createFolder() const { provider_->createFolder(location_); }
void StorageItem::createFolderRecursive() const { provider_->createFolderRecursive(location_); }
void StorageItem::removeFile() const { provider_->removeFile(location_); }
void StorageItem::removeFolder() const { provider_->removeFolder(location_); }
void StorageItem::removeFolderRecursively() const { provider_->removeFolderRecursively(location_); }

void StorageItem::moveFile(const StorageIRI& destination, const ReplacementPolicy& policy) const {
  provider_->moveFile(location_, destination, policy);
}

void StorageItem::moveFolder(const StorageIRI& destination, const ReplacementPolicy& policy) const {
  provider_->moveFolder(location_, destination, policy);
}

TransactionStatus StorageItem::copyFile(const StorageItem& destination, const CopyFileOptions& options) const {
  const bool exists = destination.fileExists();
  if (exists && preservesExisting(options.replacementPolicy))
    throw Exception(ErrorCode::ResourceAlreadyExists, destination.location_);
  const bool isAtomic = options.transactionPolicy == TransactionPolicy::Atomic;
  if (hasSameProviderInstance(destination)) {
    if (!isAtomic && !options.interruptCallback) {
      provider_->copyFile(location_, destination.location_, options.replacementPolicy);
      return TransactionStatus::Completed;
    }
    if (isAtomic && hasFeature(ExtendedFeature::AtomicFileCopy))
      return provider_->copyFileAtomic(location_, destination.location_, options.replacementPolicy,
                                       options.interruptCallback);
  }
  if (exists && detail::areOneFile(*provider_, location_, *destination.provider_, destination.location_))
    throw detail::selfCopyRefusal(destination.location_);
  return detail::copyThroughStreams(*this, destination, options);
}

void StorageItem::copyFile(const StorageItem& destination, const ReplacementPolicy& policy) const {
  copyFile(destination, CopyFileOptions{.replacementPolicy = policy});
}

FileAttributes StorageItem::getFileAttributes() const { return provider_->getFileAttributes(location_); }
FolderAttributes StorageItem::getFolderAttributes() const { return provider_->getFolderAttributes(location_); }
ExtendedAttributes StorageItem::getExtendedAttributes() const { return provider_->getExtendedAttributes(location_); }

void StorageItem::setLastModified(const boost::posix_time::ptime& time) const {
  provider_->setLastModified(location_, time);
}

void StorageItem::setWritable(bool writable) const { provider_->setWritable(location_, writable); }
void StorageItem::truncateToSize(std::uint64_t newSize) const { provider_->truncateToSize(location_, newSize); }

std::unique_ptr<ByteStream> StorageItem::openReadOnlyStream() const { return provider_->openReadOnlyStream(location_); }

std::unique_ptr<ByteStream> StorageItem::openStream(const ByteStreamOpenOptions& options) const {
  return provider_->openStream(location_, options);
}

std::unique_ptr<TransactionalStream> StorageItem::openTransactionalStream(const ByteStreamOpenOptions& options) const {
  return provider_->openTransactionalStream(location_, options);
}

IProvider::Listing StorageItem::listAll(std::u16string wildcard) const {
  return provider_->listAll(location_, std::move(wildcard));
}

IProvider::Listing StorageItem::listFiles(std::u16string wildcard) const {
  return provider_->listFiles(location_, std::move(wildcard));
}

IProvider::Listing StorageItem::listFolders(std::u16string wildcard) const {
  return provider_->listFolders(location_, std::move(wildcard));
}

IProvider::Listing StorageItem::listAllNamesOnly(std::u16string wildcard) const {
  return provider_->listAllNamesOnly(location_, std::move(wildcard));
}

IProvider::Listing StorageItem::listFilesNamesOnly(std::u16string wildcard) const {
  return provider_->listFilesNamesOnly(location_, std::move(wildcard));
}

IProvider::Listing StorageItem::listFoldersNamesOnly(std::u16string wildcard) const {
  return provider_->listFoldersNamesOnly(location_, std::move(wildcard));
}

IProvider::Listing StorageItem::listAllRecursive(std::u16string wildcard) const {
  return provider_->listAllRecursive(location_, std::move(wildcard));
}

IProvider::Listing StorageItem::listAllRecursiveNamesOnly(std::u16string wildcard) const {
  return provider_->listAllRecursiveNamesOnly(location_, std::move(wildcard));
}

void StorageItem::publishFileEvents(const ChangeCallback& callback, const std::vector<events::Kind>& kinds) const {
  provider_->publishFileEventsFor(location_, callback, kinds);
}

void StorageItem::publishFolderEvents(const ChangeCallback& callback, const std::vector<events::Kind>& kinds,
                                      RecursiveFileWatching recursion) const {
  provider_->publishFolderEventsFor(location_, callback, kinds, recursion);
}

void StorageItem::stopPublishingFileEvents() const { provider_->stopPublishingFileEventsFor(location_); }
void StorageItem::stopPublishingFolderEvents() const { provider_->stopPublishingFolderEventsFor(location_); }

void StorageItem::startChangePollingMechanism(const ChangeCallback& callback, const std::vector<events::Kind>& kinds,
                                              std::chrono::milliseconds period,
                                              RecursiveChangePolling recursion) const {
  provider_->startChangePollingMechanism(location_, callback, kinds, period, recursion);
}

void StorageItem::stopChangePollingMechanism() const { provider_->stopChangePollingMechanism(location_); }

bool StorageItem::hasFeature(const ExtendedFeature& feature) const { return provider_->hasFeature(feature); }
PathComparator StorageItem::getPathComparator() const { return provider_->getPathComparator(location_); }
StorageIRI StorageItem::getCanonicalLocation() const { return provider_->getCanonicalLocation(location_); }

FilenameSensitivity StorageItem::getFilenameSensitivity() const { return provider_->getFilenameSensitivity(location_); }

ProviderCacheUsage StorageItem::getProviderCacheUsage() const { return provider_->getProviderCacheUsage(location_); }

ProviderStorageInfo StorageItem::getProviderStorageInfo() const { return provider_->getProviderStorageInfo(location_); }

void StorageItem::configure(boost::property_tree::ptree configuration) const {
  if (auto* configurable = dynamic_cast<IConfigurableProvider*>(provider_.get()))
    configurable->configure(std::move(configuration));
}

void StorageItem::flushFilesystem() const {
  if (auto* flushable = dynamic_cast<extensions::IFlushableFilesystem*>(provider_.get()))
    flushable->flushFilesystem();
}

void StorageItem::shutdownProvider() const { provider_->shutdown(); }

void invalidateProvider(const StorageItem& item) {
  const auto provider = item.provider_;
  if (auto* invalidatable = dynamic_cast<extensions::IInvalidatable*>(provider.get()))
    invalidatable->invalidate(item.location_);
}

}  // namespace foundation::storage::provider
