#include <fstore/MakeFolder.h>

#include <foundation/storage/provider/Exception.h>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::StorageItem;

namespace {

/// A missing container is a missing parent, too.
void ensureContainer(const StorageItem& folder) {
  const StorageItem root(folder, u"/");
  if (folder.getLocation().hasInnerIRI() && !root.folderExists())
    root.createFolder();
}

void ensureFolder(const StorageItem& folder) {
  if (folder.folderExists())
    return;
  try {
    ensureContainer(folder);
    if (!folder.folderExists())
      folder.createFolderRecursive();
  } catch (const provider::Exception& failure) {
    // Somebody else may have been faster.
    if (failure.getErrorCode() != provider::ErrorCode::ResourceAlreadyExists || !folder.folderExists())
      throw;
  }
}

}  // namespace

void makeFolders(const Session& session, const std::vector<std::string>& arguments, MissingParents parents) {
  session.forEach(arguments, [&](const StorageItem& folder, const std::string&) {
    if (parents == MissingParents::Create)
      ensureFolder(folder);
    else
      folder.createFolder();
  });
}

}  // namespace fstore
