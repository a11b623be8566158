// What a back end inherits where it overrides nothing: refusals and neutral answers. The defaults that
// are algorithms stand in IProviderAlgorithms.cpp.

#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/IProvider.h>

namespace foundation::storage::provider {
namespace {

[[noreturn]] void refuse(const StorageIRI& location) { throw Exception(ErrorCode::UnsupportedOperation, location); }

}  // namespace

void IProvider::doRemoveFolderRecursively(const StorageIRI& location) const { refuse(location); }

IProvider::Listing IProvider::doListAllWildcards(const StorageIRI& location, std::u16string) const {
  return doListAll(location);
}

IProvider::Listing IProvider::doListFilesWildcards(const StorageIRI& location, std::u16string) const {
  return doListFiles(location);
}

IProvider::Listing IProvider::doListFoldersWildcards(const StorageIRI& location, std::u16string) const {
  return doListFolders(location);
}

IProvider::Listing IProvider::doListAllNamesOnly(const StorageIRI& location) const { return doListAll(location); }

IProvider::Listing IProvider::doListAllNamesOnlyWildcards(const StorageIRI& location, std::u16string) const {
  return doListAllNamesOnly(location);
}

IProvider::Listing IProvider::doListFoldersNamesOnly(const StorageIRI& location) const {
  return doListFolders(location);
}

IProvider::Listing IProvider::doListFoldersNamesOnlyWildcards(const StorageIRI& location, std::u16string) const {
  return doListFoldersNamesOnly(location);
}

IProvider::Listing IProvider::doListFilesNamesOnly(const StorageIRI& location) const { return doListFiles(location); }

IProvider::Listing IProvider::doListFilesNamesOnlyWildcards(const StorageIRI& location, std::u16string) const {
  return doListFilesNamesOnly(location);
}

IProvider::Listing IProvider::doListAllRecursive(const StorageIRI& location) const { refuse(location); }

IProvider::Listing IProvider::doListAllRecursiveWildcards(const StorageIRI& location, std::u16string) const {
  return doListAllRecursive(location);
}

IProvider::Listing IProvider::doListAllRecursiveNamesOnly(const StorageIRI& location) const {
  return doListAllRecursive(location);
}

IProvider::Listing IProvider::doListAllRecursiveNamesOnlyWildcards(const StorageIRI& location, std::u16string) const {
  return doListAllRecursiveNamesOnly(location);
}

TransactionStatus IProvider::doCopyFileAtomic(const StorageIRI& source, const StorageIRI&, const ReplacementPolicy&,
                                              const InterruptCallback&) const {
  refuse(source);
}

void IProvider::doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime&) const {
  refuse(location);
}

void IProvider::doSetWritable(const StorageIRI& location, bool) const { refuse(location); }

void IProvider::doPublishFolderEventsFor(const StorageIRI& location, const ChangeCallback&,
                                         const std::vector<events::Kind>&, RecursiveFileWatching) const {
  throw ChangeEventsNotSupportedException(location);
}

void IProvider::doPublishFileEventsFor(const StorageIRI& location, const ChangeCallback&,
                                       const std::vector<events::Kind>&) const {
  throw ChangeEventsNotSupportedException(location);
}

void IProvider::doStopPublishingEventsFor(const StorageIRI&) const {}

bool IProvider::doHasFeature(const ExtendedFeature&) const { return false; }

StorageIRI IProvider::doGetCanonicalLocation(const StorageIRI& location) const { return location.getResolvedIRI(); }

FilenameSensitivity IProvider::doGetFilenameSensitivity(const StorageIRI&) const { return {}; }

void IProvider::doShutdown() {}

ExtendedAttributes IProvider::doGetExtendedAttributes(const StorageIRI&) const { return {}; }

ProviderStorageInfo IProvider::doGetProviderStorageInfo(const StorageIRI& location) const { refuse(location); }

ProviderCacheUsage IProvider::doGetProviderCacheUsage(const StorageIRI&) const { return {}; }

}  // namespace foundation::storage::provider
