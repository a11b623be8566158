#include <fstore/MakeFolder.h>

#include <foundation/storage/provider/Exception.h>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::StorageItem;

namespace {

void ensureFolder(const StorageItem& folder) {
  if (folder.folderExists())
    return;
  try {
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
