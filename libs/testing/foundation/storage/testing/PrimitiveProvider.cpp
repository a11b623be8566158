#include <foundation/storage/testing/PrimitiveProvider.h>

#include <utility>

namespace foundation::storage::testing {

PrimitiveProvider::PrimitiveProvider(std::shared_ptr<provider::IProvider> inner) : inner_(std::move(inner)) {}
PrimitiveProvider::~PrimitiveProvider() { endChangePolling(); }

void PrimitiveProvider::doCreateFile(const StorageIRI& location) const { inner_->createFile(location); }
void PrimitiveProvider::doCreateFolder(const StorageIRI& location) const { inner_->createFolder(location); }
bool PrimitiveProvider::doFileExists(const StorageIRI& location) const { return inner_->fileExists(location); }
bool PrimitiveProvider::doFolderExists(const StorageIRI& location) const { return inner_->folderExists(location); }
void PrimitiveProvider::doRemoveFile(const StorageIRI& location) const { inner_->removeFile(location); }

void PrimitiveProvider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                                   const ReplacementPolicy& policy) const {
  inner_->moveFile(source, destination, policy);
}

void PrimitiveProvider::doRemoveFolder(const StorageIRI& location) const { inner_->removeFolder(location); }

void PrimitiveProvider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                                     const ReplacementPolicy& policy) const {
  inner_->moveFolder(source, destination, policy);
}

provider::FileAttributes PrimitiveProvider::doGetFileAttributes(const StorageIRI& location) const {
  return inner_->getFileAttributes(location);
}

provider::FolderAttributes PrimitiveProvider::doGetFolderAttributes(const StorageIRI& location) const {
  return inner_->getFolderAttributes(location);
}

std::unique_ptr<provider::ByteStream> PrimitiveProvider::doOpenStream(
    const StorageIRI& location, const provider::ByteStreamOpenOptions& options) const {
  return inner_->openStream(location, options);
}

std::unique_ptr<provider::ByteStream> PrimitiveProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return inner_->openReadOnlyStream(location);
}

PrimitiveProvider::Listing PrimitiveProvider::doListAll(const StorageIRI& location) const {
  return inner_->listAll(location, {});
}

PrimitiveProvider::Listing PrimitiveProvider::doListFiles(const StorageIRI& location) const {
  return inner_->listFiles(location, {});
}

PrimitiveProvider::Listing PrimitiveProvider::doListFolders(const StorageIRI& location) const {
  return inner_->listFolders(location, {});
}

}  // namespace foundation::storage::testing
