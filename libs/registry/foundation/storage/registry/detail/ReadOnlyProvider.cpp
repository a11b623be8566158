#include <foundation/storage/registry/detail/ReadOnlyProvider.h>

#include <fl/i18n/Convert.h>
#include <foundation/log/DiagnosticLogger.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/registry/detail/AskedLocation.h>
#include <foundation/storage/registry/detail/FilteredListing.h>

#include <sstream>
#include <utility>

namespace foundation::storage::registry::detail {

using provider::ByteStreamOpenOptions;
using provider::IProvider;
using provider::TransactionalStream;

namespace {

[[noreturn]] void refuse(const provider::StorageIRI& location) {
  throw provider::Exception(provider::ErrorCode::ReadOnlyProvider, location);
}

}  // namespace

ReadOnlyProvider::ReadOnlyProvider(std::shared_ptr<IProvider> inner, std::u16string prefix)
    : inner_(std::move(inner)), prefix_(std::move(prefix)) {}

ReadOnlyProvider::~ReadOnlyProvider() {
  endChangePolling();
  try {
    stopAllPublishing();
  } catch (const std::exception& failure) {
    foundation::log::diagnostic_logger("foundation::storage::registry")
        .write(foundation::log::Level::error, std::string("A read-only view cannot end its events: ") + failure.what());
  }
}

template <class Result>
Result ReadOnlyProvider::ask(Result (IProvider::*operation)(const StorageIRI&) const,
                             const StorageIRI& location) const {
  return AskedLocation(location, prefix_).run([&](const StorageIRI& inner) { return (*inner_.*operation)(inner); });
}

ReadOnlyProvider::Listing ReadOnlyProvider::list(ListOperation operation, const StorageIRI& location,
                                                 std::u16string wildcard) const {
  const AskedLocation asked(location, prefix_);
  auto entries = asked.run([&](const StorageIRI& inner) { return (*inner_.*operation)(inner, std::move(wildcard)); });
  return std::make_unique<FilteredListing>(std::move(entries), asked);
}

bool ReadOnlyProvider::doFileExists(const StorageIRI& location) const { return ask(&IProvider::fileExists, location); }

bool ReadOnlyProvider::doFolderExists(const StorageIRI& location) const {
  return ask(&IProvider::folderExists, location);
}

provider::ExistenceType ReadOnlyProvider::doExists(const StorageIRI& location) const {
  return ask(&IProvider::exists, location);
}

provider::ExistenceTypeExtended ReadOnlyProvider::doExistsExtended(const StorageIRI& location) const {
  return ask(&IProvider::existsExtended, location);
}

provider::FileAttributes ReadOnlyProvider::doGetFileAttributes(const StorageIRI& location) const {
  return ask(&IProvider::getFileAttributes, location);
}

provider::FolderAttributes ReadOnlyProvider::doGetFolderAttributes(const StorageIRI& location) const {
  return ask(&IProvider::getFolderAttributes, location);
}

provider::ExtendedAttributes ReadOnlyProvider::doGetExtendedAttributes(const StorageIRI& location) const {
  return ask(&IProvider::getExtendedAttributes, location);
}

provider::PathComparator ReadOnlyProvider::doGetPathComparator(const StorageIRI& location) const {
  return ask(&IProvider::getPathComparator, location);
}

provider::FilenameSensitivity ReadOnlyProvider::doGetFilenameSensitivity(const StorageIRI& location) const {
  return ask(&IProvider::getFilenameSensitivity, location);
}

provider::ProviderStorageInfo ReadOnlyProvider::doGetProviderStorageInfo(const StorageIRI& location) const {
  return ask(&IProvider::getProviderStorageInfo, location);
}

provider::ProviderCacheUsage ReadOnlyProvider::doGetProviderCacheUsage(const StorageIRI& location) const {
  return ask(&IProvider::getProviderCacheUsage, location);
}

// However the prefix was written, the canonical location has it as it is registered.
provider::StorageIRI ReadOnlyProvider::doGetCanonicalLocation(const StorageIRI& location) const {
  return StorageIRI(prefix_ + u'+' + ask(&IProvider::getCanonicalLocation, location).toString());
}

std::unique_ptr<provider::ByteStream> ReadOnlyProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return ask(&IProvider::openReadOnlyStream, location);
}

std::unique_ptr<TransactionalStream> ReadOnlyProvider::doOpenTransactionalStream(const StorageIRI& location,
                                                                                 const ByteStreamOpenOptions&) const {
  refuse(location);
}

std::unique_ptr<TransactionalStream> ReadOnlyProvider::doOpenTransactionalStreamAtScratchLocation(
    const StorageIRI& location, const StorageIRI&, const ByteStreamOpenOptions&) const {
  refuse(location);
}

provider::TransactionStatus ReadOnlyProvider::doCopyFileAtomic(const StorageIRI& source, const StorageIRI&,
                                                               const provider::ReplacementPolicy&,
                                                               const provider::InterruptCallback&) const {
  refuse(source);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAll(const StorageIRI& location) const {
  return list(&IProvider::listAll, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAllWildcards(const StorageIRI& location,
                                                               std::u16string wildcard) const {
  return list(&IProvider::listAll, location, std::move(wildcard));
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFiles(const StorageIRI& location) const {
  return list(&IProvider::listFiles, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFilesWildcards(const StorageIRI& location,
                                                                 std::u16string wildcard) const {
  return list(&IProvider::listFiles, location, std::move(wildcard));
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFolders(const StorageIRI& location) const {
  return list(&IProvider::listFolders, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFoldersWildcards(const StorageIRI& location,
                                                                   std::u16string wildcard) const {
  return list(&IProvider::listFolders, location, std::move(wildcard));
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAllNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listAllNamesOnly, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAllNamesOnlyWildcards(const StorageIRI& location,
                                                                        std::u16string wildcard) const {
  return list(&IProvider::listAllNamesOnly, location, std::move(wildcard));
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFoldersNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listFoldersNamesOnly, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFoldersNamesOnlyWildcards(const StorageIRI& location,
                                                                            std::u16string wildcard) const {
  return list(&IProvider::listFoldersNamesOnly, location, std::move(wildcard));
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFilesNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listFilesNamesOnly, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListFilesNamesOnlyWildcards(const StorageIRI& location,
                                                                          std::u16string wildcard) const {
  return list(&IProvider::listFilesNamesOnly, location, std::move(wildcard));
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAllRecursive(const StorageIRI& location) const {
  return list(&IProvider::listAllRecursive, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAllRecursiveWildcards(const StorageIRI& location,
                                                                        std::u16string wildcard) const {
  return list(&IProvider::listAllRecursive, location, std::move(wildcard));
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAllRecursiveNamesOnly(const StorageIRI& location) const {
  return list(&IProvider::listAllRecursiveNamesOnly, location);
}

ReadOnlyProvider::Listing ReadOnlyProvider::doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location,
                                                                                 std::u16string wildcard) const {
  return list(&IProvider::listAllRecursiveNamesOnly, location, std::move(wildcard));
}

void ReadOnlyProvider::doPublishFolderEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                                const Kinds& kinds, provider::RecursiveFileWatching recursion) const {
  const AskedLocation asked(location, prefix_);
  asked.run([&](const StorageIRI& folder) {
    inner_->publishFolderEventsFor(folder, asked.translating(callback), kinds, recursion);
    notePublished(folder);
  });
}

void ReadOnlyProvider::doPublishFileEventsFor(const StorageIRI& location, const provider::ChangeCallback& callback,
                                              const Kinds& kinds) const {
  const AskedLocation asked(location, prefix_);
  asked.run([&](const StorageIRI& file) {
    inner_->publishFileEventsFor(file, asked.translating(callback), kinds);
    notePublished(file.getParent());
  });
}

void ReadOnlyProvider::doStopPublishingEventsFor(const StorageIRI& location) const {
  AskedLocation(location, prefix_).run([&](const StorageIRI& folder) {
    inner_->stopPublishingFolderEventsFor(folder);
    const std::scoped_lock lock(mutex_);
    published_.erase(folder);
  });
}

void ReadOnlyProvider::notePublished(StorageIRI folder) const {
  const std::scoped_lock lock(mutex_);
  published_.insert(std::move(folder));
}

void ReadOnlyProvider::stopAllPublishing() const {
  std::set<StorageIRI> folders;
  {
    const std::scoped_lock lock(mutex_);
    folders.swap(published_);
  }
  for (const auto& folder : folders)
    inner_->stopPublishingFolderEventsFor(folder);
}

void ReadOnlyProvider::doShutdown() {
  endChangePolling();
  stopAllPublishing();
}

void ReadOnlyProvider::doFlushFilesystem() {
  if (auto* flushable = dynamic_cast<provider::extensions::IFlushableFilesystem*>(inner_.get()))
    flushable->flushFilesystem();
}

void ReadOnlyProvider::doInvalidate(const StorageIRI& location) {
  AskedLocation(location, prefix_).run([&](const StorageIRI& inner) {
    if (auto* invalidatable = dynamic_cast<provider::extensions::IInvalidatable*>(inner_.get()))
      invalidatable->invalidate(inner);
  });
}

std::u16string ReadOnlyProvider::doGetFileIdentity(const StorageIRI& location) const {
  return AskedLocation(location, prefix_).run([&](const StorageIRI& inner) {
    if (const auto* identities = dynamic_cast<const provider::extensions::IFileIdentity*>(inner_.get()))
      return identities->getFileIdentity(inner);
    std::ostringstream store;
    store << "filtered:" << inner_.get() << ':';
    return fl::i18n::to_ustring(store.str()) + inner_->getCanonicalLocation(inner).toString();
  });
}

}  // namespace foundation::storage::registry::detail
