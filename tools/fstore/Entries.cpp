#include "Entries.h"

#include "Arguments.h"
#include "Report.h"
#include "Target.h"

#include <foundation/storage/provider/Exception.h>

namespace fstore {

using namespace foundation::storage::provider;

namespace {

/// Removes what a folder holds but for the folders in it, and returns those.
std::vector<StorageItem> removeFilesIn(const StorageItem& folder) {
  std::vector<StorageItem> folders;
  for (const auto entries = folder.listAll(u""); entries->hasNext();) {
    entries->next();
    const auto entry = entries->current();
    const StorageItem child(folder, entry.getName());
    const auto& attributes = entry.getFolderAttributes();
    if (entry.isFile() || (attributes && attributes->isSymlink()))
      child.removeFile();
    else
      folders.push_back(child);
  }
  return folders;
}

/// For stores that cannot remove a tree themselves. No recursion: trees may be deeper than a stack.
void removeTree(const StorageItem& top) {
  struct Step {
    StorageItem folder;
    bool isEmptied;
  };
  std::vector<Step> steps{{top, false}};
  while (!steps.empty()) {
    auto& step = steps.back();
    if (step.isEmptied) {
      step.folder.removeFolder();
      steps.pop_back();
      continue;
    }
    step.isEmptied = true;
    for (auto& folder : removeFilesIn(StorageItem(step.folder)))
      steps.push_back({std::move(folder), false});
  }
}

void removeFolder(const StorageItem& folder) {
  if (folder.hasFeature(ExtendedFeature::RecursiveFolderRemoval))
    folder.removeFolderRecursively();
  else
    removeTree(folder);
}

void removeOne(const StorageItem& item, bool recursive, Report& report) {
  const auto name = item.getName();
  if (!item.hasParent() || name == u"." || name == u"..")
    return report.fail(item.getLocation(), ErrorCode::InvalidLocation, "This is not removed by such a name");
  if (item.existsExtended() != ExistenceTypeExtended::RegularFolder)
    return item.removeFile();
  if (!recursive)
    return report.fail(item.getLocation(), ErrorCode::InvalidLocation, "This is a folder; use -r");
  removeFolder(item);
}

void makeTree(const StorageItem& folder) {
  if (folder.folderExists())
    return;
  try {
    folder.createFolderRecursive();
  } catch (const Exception& failure) {
    // Somebody else may have made it meanwhile.
    if (failure.getErrorCode() != ErrorCode::ResourceAlreadyExists || !folder.folderExists())
      throw;
  }
}

}  // namespace

int move(const std::vector<std::string>& arguments, bool noClobber) {
  const auto policy = noClobber ? ReplacementPolicy::NoClobber : ReplacementPolicy::Overwrite;
  Report report("mv");
  transferEach(arguments, report, [&](const StorageItem& source, const StorageItem& target) {
    if (source.folderExists())
      source.moveFolder(target.getLocation(), policy);
    else
      source.moveFile(target.getLocation(), policy);
  });
  return report.exitCode();
}

int remove(const std::vector<std::string>& arguments, bool recursive) {
  Report report("rm");
  for (const auto& argument : arguments)
    report.attempt(argument, [&] { removeOne(itemFor(argument), recursive, report); });
  return report.exitCode();
}

int makeFolders(const std::vector<std::string>& arguments, bool withParents) {
  Report report("mkdir");
  for (const auto& argument : arguments)
    report.attempt(argument, [&] {
      const auto folder = itemFor(argument);
      if (!withParents)
        folder.createFolder();
      else
        makeTree(folder);
    });
  return report.exitCode();
}

}  // namespace fstore
