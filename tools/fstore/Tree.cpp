#include <fstore/Facts.h>
#include <fstore/JsonArray.h>
#include <fstore/Text.h>
#include <fstore/Tree.h>
#include <fstore/TreeWalk.h>

#include <fl/i18n/Convert.h>

#include <nlohmann/json.hpp>

namespace fstore {

using foundation::storage::provider::FolderEntry;
using foundation::storage::provider::StorageItem;

namespace {

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

class TreePrinter {
 public:
  TreePrinter(const Session& session, const TreeOptions& options)
      : session_(session), options_(options), json_(session.output, options.format) {}

  void print(const StorageItem& item, const std::string& argument) {
    const auto root = entryOf(item, fl::i18n::to_ustring(argument));
    write(item, root, 0, shown(root.getName(), session_.output));
    if (root.isFile())
      ++files_;
    else
      walk_.run(item);
  }

  void printEnd() {
    json_.end();
    if (!json_.isWritten())
      session_.output.write("\n" + counted(folders_, "folder") +
                            (options_.foldersOnly ? "" : ", " + counted(files_, "file")) + "\n");
  }

 private:
  bool selects(const FolderEntry& entry) const {
    return (options_.withHidden || !isHidden(entry)) && (!options_.foldersOnly || !entry.isFile());
  }

  void visit(const TreeWalk::Place& place) {
    ++(place.entry.isFile() ? files_ : folders_);
    isLast_.resize(place.depth - 1);
    std::string line;
    for (const bool isLast : isLast_)
      line += isLast ? "    " : "│   ";
    isLast_.push_back(place.isLast);
    line += place.isLast ? "└── " : "├── ";
    write(place.item, place.entry, place.depth, line + shown(place.entry.getName(), session_.output));
  }

  void write(const StorageItem& item, const FolderEntry& entry, std::size_t depth, const std::string& line) {
    if (!json_.isWritten())
      return session_.output.write(line + "\n");
    auto element = toJson(item, entry);
    element["depth"] = depth;
    json_.add(element);
  }

  const Session& session_;
  const TreeOptions& options_;
  JsonArray json_;
  TreeWalk walk_{session_.report, [this](const FolderEntry& entry) { return selects(entry); }, options_.maxDepth,
                 [this](const TreeWalk::Place& place) { visit(place); }};
  std::vector<bool> isLast_;  ///< of the folders that the walk is in, from the outermost inwards
  std::size_t folders_ = 0;
  std::size_t files_ = 0;
};

}  // namespace

void printTree(const Session& session, const std::vector<std::string>& arguments, const TreeOptions& options) {
  TreePrinter printer(session, options);
  session.forEach(arguments,
                  [&](const StorageItem& item, const std::string& argument) { printer.print(item, argument); });
  printer.printEnd();
}

}  // namespace fstore
