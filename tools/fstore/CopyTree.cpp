#include "CopyTree.h"

#include "Report.h"
#include "Target.h"

#include <foundation/storage/provider/Exception.h>

#include <memory>

namespace fstore {

using namespace foundation::storage::provider;

namespace {

/// A folder on the way from the top of the tree down, by its canonical location.
struct Ancestor {
  StorageIRI canonical;
  std::shared_ptr<const Ancestor> parent;
};

/// A folder that is still to be copied.
struct Pending {
  StorageItem source;
  StorageItem target;
  std::shared_ptr<const Ancestor> ancestors;  ///< the folder itself first
};

struct Child {
  std::u16string name;
  bool isFile;
  bool isLink;
};

/// The names are gathered first: no folder stays open while those below it are copied.
std::vector<Child> childrenOf(const StorageItem& folder) {
  std::vector<Child> children;
  for (const auto entries = folder.listAll(u""); entries->hasNext();) {
    entries->next();
    const auto entry = entries->current();
    const bool isLink = entry.getFolderAttributes() && entry.getFolderAttributes()->isSymlink();
    children.push_back({entry.getName(), entry.isFile(), isLink});
  }
  return children;
}

/// The canonical location of something that need not exist yet, in a folder that does.
StorageIRI canonicalTarget(const StorageItem& target) {
  if (target.folderExists() || !target.hasParent())
    return target.getCanonicalLocation();
  return {target.getParent().getCanonicalLocation(), target.getName()};
}

[[noreturn]] void refuse(const StorageIRI& location, const std::u16string& reason) {
  Exception refusal(ErrorCode::InvalidLocation, location);
  refusal.setExceptionContexts({ExceptionContext(u"fstore", ExceptionContextInfo(reason, {}, {}))});
  throw refusal;
}

/// Copies one tree, folder by folder, without recursion: trees may be deeper than a stack.
class TreeCopy {
 public:
  TreeCopy(const StorageItem& source, const StorageItem& target, ReplacementPolicy policy, Report& report)
      : policy_(policy), report_(report), canonicalTarget_(canonicalTarget(target)) {
    const auto canonical = source.getCanonicalLocation();
    if (canonical == canonicalTarget_ || canonical.isAncestorOf(canonicalTarget_))
      refuse(target.getLocation(), u"A folder cannot be copied into itself");
    pending_.push_back({source, target, std::make_shared<Ancestor>(Ancestor{canonical, nullptr})});
  }

  void run() {
    while (!pending_.empty()) {
      const auto folder = std::move(pending_.back());
      pending_.pop_back();
      report_.attempt(folder.source.getLocation(), [&] { copyFolder(folder); });
    }
  }

 private:
  void copyFolder(const Pending& folder) {
    if (!folder.target.folderExists())
      folder.target.createFolder();
    for (const auto& child : childrenOf(folder.source)) {
      const StorageItem source(folder.source, child.name);
      report_.attempt(source.getLocation(), [&] { copyChild(folder, child, source); });
    }
  }

  void copyChild(const Pending& folder, const Child& child, const StorageItem& source) {
    StorageItem target(folder.target, child.name);
    if (child.isFile)
      return source.copyFile(target, policy_);
    const StorageIRI canonical =
        child.isLink ? source.getCanonicalLocation() : StorageIRI(folder.ancestors->canonical, child.name);
    requireNewGround(canonical, folder, source);
    pending_.push_back({source, target, std::make_shared<Ancestor>(Ancestor{canonical, folder.ancestors})});
  }

  /// Links can lead back up, or to where the copy is being written; both would never end.
  void requireNewGround(const StorageIRI& canonical, const Pending& folder, const StorageItem& source) const {
    if (canonical == canonicalTarget_)
      refuse(source.getLocation(), u"The folder leads to its own copy");
    for (const auto* above = folder.ancestors.get(); above != nullptr; above = above->parent.get())
      if (above->canonical == canonical)
        refuse(source.getLocation(), u"The link leads back to a folder that it is in");
  }

  ReplacementPolicy policy_;
  Report& report_;
  StorageIRI canonicalTarget_;
  std::vector<Pending> pending_;
};

}  // namespace

int copy(const std::vector<std::string>& arguments, bool noClobber) {
  const auto policy = noClobber ? ReplacementPolicy::NoClobber : ReplacementPolicy::Overwrite;
  Report report("cp");
  transferEach(arguments, report, [&](const StorageItem& source, const StorageItem& target) {
    if (source.folderExists())
      TreeCopy(source, target, policy, report).run();
    else
      source.copyFile(target, policy);
  });
  return report.exitCode();
}

}  // namespace fstore
