#include <foundation/storage/provider/IProvider.h>

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/SafeByteStream.h>
#include <foundation/storage/provider/events/PollingChangeEventsDetector.h>

#include <utility>

namespace foundation::storage::provider {

IProvider::IProvider() = default;
IProvider::~IProvider() = default;

void IProvider::moveFolder(const StorageIRI& source, const StorageIRI& destination,
                           const ReplacementPolicy& policy) const {
  if (source.isAncestorOf(destination))
    throw Exception(ErrorCode::InvalidLocation, destination);
  doMoveFolder(source, destination, policy);
}

std::unique_ptr<ByteStream> IProvider::openStream(const StorageIRI& location,
                                                  const ByteStreamOpenOptions& options) const {
  const bool readable = options.access == ByteStreamAccess::ReadWrite;
  return std::make_unique<SafeByteStream>(doOpenStream(location, options), readable, true);
}

std::unique_ptr<ByteStream> IProvider::openReadOnlyStream(const StorageIRI& location) const {
  return std::make_unique<SafeByteStream>(doOpenReadOnlyStream(location), true, false);
}

IProvider::Listing IProvider::listAll(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListAll(location) : doListAllWildcards(location, std::move(wildcard));
}

IProvider::Listing IProvider::listFiles(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListFiles(location) : doListFilesWildcards(location, std::move(wildcard));
}

IProvider::Listing IProvider::listFolders(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListFolders(location) : doListFoldersWildcards(location, std::move(wildcard));
}

IProvider::Listing IProvider::listAllNamesOnly(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListAllNamesOnly(location) : doListAllNamesOnlyWildcards(location, std::move(wildcard));
}

IProvider::Listing IProvider::listFilesNamesOnly(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListFilesNamesOnly(location)
                          : doListFilesNamesOnlyWildcards(location, std::move(wildcard));
}

IProvider::Listing IProvider::listFoldersNamesOnly(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListFoldersNamesOnly(location)
                          : doListFoldersNamesOnlyWildcards(location, std::move(wildcard));
}

IProvider::Listing IProvider::listAllRecursive(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListAllRecursive(location) : doListAllRecursiveWildcards(location, std::move(wildcard));
}

IProvider::Listing IProvider::listAllRecursiveNamesOnly(const StorageIRI& location, std::u16string wildcard) const {
  return wildcard.empty() ? doListAllRecursiveNamesOnly(location)
                          : doListAllRecursiveNamesOnlyWildcards(location, std::move(wildcard));
}

}  // namespace foundation::storage::provider
