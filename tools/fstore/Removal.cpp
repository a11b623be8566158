#include <fstore/Entries.h>
#include <fstore/Refusal.h>
#include <fstore/Removal.h>

#include <foundation/storage/provider/ExtendedFeature.h>

#include <string_view>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;
using provider::StorageItem;

namespace {

/// Removes a tree entry by entry, for stores that cannot do it in one operation.
class TreeRemoval {
 public:
  explicit TreeRemoval(Report& report) : report_(report) {}

  void run(const StorageItem& folder) {
    enter(folder);
    while (!path_.empty()) {
      auto& level = path_.back();
      if (level.next == level.entries.size())
        leave();
      else
        removeEntry(Entry(std::move(level.entries[level.next++])));
    }
  }

 private:
  struct Level {
    StorageItem folder;
    std::vector<Entry> entries;
    std::size_t next = 0;
    bool isCleared = true;  ///< so far; nothing has failed inside
  };

  void enter(const StorageItem& folder) {
    Level level{folder, {}};
    level.isCleared = report_.attempt(folder.getLocation(), [&] { collectEntries(folder, level.entries); });
    path_.push_back(std::move(level));
  }

  /// A folder that keeps something is not tried: that it is not empty is no news.
  void leave() {
    const auto level = std::move(path_.back());
    path_.pop_back();
    const bool isRemoved =
        level.isCleared && report_.attempt(level.folder.getLocation(), [&] { level.folder.removeFolder(); });
    if (!isRemoved && !path_.empty())
      path_.back().isCleared = false;
  }

  void removeEntry(const Entry& entry) {
    const StorageItem item(path_.back().folder, entry.name);
    if (entry.isFolder && !entry.isLink)
      enter(item);
    else if (!report_.attempt(item.getLocation(), [&] { item.removeFile(); }))
      path_.back().isCleared = false;
  }

  Report& report_;
  std::vector<Level> path_;
};

bool isDots(std::u16string_view name) { return name == u"." || name == u".."; }

bool endsInDots(std::string_view argument) {
  while (argument.ends_with('/'))
    argument.remove_suffix(1);
  const auto last = argument.substr(argument.rfind('/') + 1);
  return last == "." || last == "..";
}

void removeFolder(const StorageItem& folder, Report& report) {
  if (!folder.getCanonicalLocation().hasParent())
    throw refusal(ErrorCode::InvalidLocation, folder.getLocation(), u"The root is not to be removed");
  if (folder.hasFeature(provider::ExtendedFeature::RecursiveFolderRemoval))
    folder.removeFolderRecursively();
  else
    TreeRemoval(report).run(folder);
}

}  // namespace

void remove(const Session& session, const std::vector<std::string>& arguments, RemovalDepth depth) {
  session.forEach(arguments, [&](const StorageItem& item, const std::string& argument) {
    if (endsInDots(argument) || isDots(item.getName()))
      throw refusal(ErrorCode::InvalidLocation, item.getLocation(), u"'.' and '..' are not to be removed");
    if (item.existsExtended() != provider::ExistenceTypeExtended::RegularFolder)
      item.removeFile();
    else if (depth == RemovalDepth::FilesOnly)
      throw refusal(ErrorCode::InvalidLocation, item.getLocation(), u"is a folder; use -r");
    else
      removeFolder(item, session.report);
  });
}

}  // namespace fstore
