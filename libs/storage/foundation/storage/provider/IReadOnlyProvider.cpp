#include <foundation/storage/provider/IReadOnlyProvider.h>

#include <foundation/storage/provider/Exception.h>

namespace foundation::storage::provider {
namespace {

[[noreturn]] void refuse(const StorageIRI& location) { throw Exception(ErrorCode::ReadOnlyProvider, location); }

}  // namespace

IReadOnlyProvider::IReadOnlyProvider() = default;
IReadOnlyProvider::~IReadOnlyProvider() = default;

void IReadOnlyProvider::doCreateFile(const StorageIRI& location) const { refuse(location); }

void IReadOnlyProvider::doCreateFolder(const StorageIRI& location) const { refuse(location); }

void IReadOnlyProvider::doCreateFolderRecursive(const StorageIRI& location) const { refuse(location); }

void IReadOnlyProvider::doRemoveFile(const StorageIRI& location) const { refuse(location); }

void IReadOnlyProvider::doMoveFile(const StorageIRI& source, const StorageIRI&, const ReplacementPolicy&) const {
  refuse(source);
}

void IReadOnlyProvider::doRemoveFolder(const StorageIRI& location) const { refuse(location); }

void IReadOnlyProvider::doRemoveFolderRecursively(const StorageIRI& location) const { refuse(location); }

void IReadOnlyProvider::doMoveFolder(const StorageIRI& source, const StorageIRI&, const ReplacementPolicy&) const {
  refuse(source);
}

std::unique_ptr<ByteStream> IReadOnlyProvider::doOpenStream(const StorageIRI& location,
                                                            const ByteStreamOpenOptions&) const {
  refuse(location);
}

void IReadOnlyProvider::doCopyFile(const StorageIRI& source, const StorageIRI&, const ReplacementPolicy&) const {
  refuse(source);
}

void IReadOnlyProvider::doSetLastModified(const StorageIRI& location, const boost::posix_time::ptime&) const {
  refuse(location);
}

void IReadOnlyProvider::doSetWritable(const StorageIRI& location, bool) const { refuse(location); }

void IReadOnlyProvider::doTruncateToSize(const StorageIRI& location, std::uint64_t) const { refuse(location); }

}  // namespace foundation::storage::provider
