#include <fstore/Facts.h>
#include <fstore/JsonArray.h>
#include <fstore/Listing.h>
#include <fstore/Text.h>

#include <fl/i18n/Convert.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::FolderEntry;
using provider::StorageItem;

namespace {

constexpr std::size_t sizeWidth = 12;
constexpr std::size_t timeWidth = 19;

char flag(const std::optional<bool>& answer, char yes) { return answer ? (*answer ? yes : '-') : '?'; }

std::string sizeText(const FolderEntry& entry) {
  const auto size = sizeOf(entry);
  return size ? std::to_string(*size) : entry.getFolderAttributes() ? "-" : "?";
}

std::string details(const FolderEntry& entry) {
  const char type = flag(isLink(entry), 'l');
  std::string line{type == '-' ? (entry.isFile() ? '-' : 'd') : type, flag(isWritable(entry), 'w'), ' '};
  const auto size = sizeText(entry);
  line.append(sizeWidth - std::min(sizeWidth, size.size()), ' ').append(size).append(1, ' ');
  const auto time = timeText(lastModified(entry));
  return line.append(time).append(timeWidth - std::min(timeWidth, time.size()) + 1, ' ');
}

class Lister {
 public:
  Lister(const Session& session, const ListingOptions& options)
      : report_(session.report), output_(session.output), options_(options), json_(session.output, options.format) {}

  void printItem(const StorageItem& item, const std::string& argument) {
    print(lineFor(item, entryOf(item, fl::i18n::to_ustring(argument))));
  }

  void printFolder(const StorageItem& folder) {
    std::vector<std::pair<std::u16string, std::string>> lines;
    // What was found before a failure is shown nevertheless.
    report_.attempt(folder.getLocation(), [&] {
      forEachShown(folder, [&](const FolderEntry& entry) {
        auto line = lineFor({folder, entry.getName()}, entry);
        if (options_.sorted)
          lines.emplace_back(entry.getName(), std::move(line));
        else
          print(line);
      });
    });
    std::sort(lines.begin(), lines.end());
    for (const auto& line : lines)
      print(line.second);
  }

  /// @param argument  none where there is only one
  void printHeading(const std::optional<std::string>& argument) {
    if (json_.isWritten())
      return;
    output_.write(hasPrinted_ ? "\n" : "");
    if (argument)
      output_.write(shown(fl::i18n::to_ustring(*argument), output_) + ":\n");
    hasPrinted_ = true;
  }

  void printEnd() { json_.end(); }

 private:
  template <class Use>
  void forEachShown(const StorageItem& folder, const Use& use) const {
    const bool needsAttributes = options_.withDetails || json_.isWritten();
    const auto listing = needsAttributes ? folder.listAll(u"") : folder.listAllNamesOnly(u"");
    while (listing->hasNext()) {
      listing->next();
      const auto entry = listing->current();
      if (options_.withHidden || !isHidden(entry))
        use(entry);
    }
  }

  std::string lineFor(const StorageItem& item, const FolderEntry& entry) const {
    if (json_.isWritten())
      return toJson(item, entry).dump();
    return (options_.withDetails ? details(entry) : std::string()) + shown(entry.getName(), output_) + '\n';
  }

  void print(const std::string& line) {
    hasPrinted_ = true;
    if (json_.isWritten())
      json_.addText(line);
    else
      output_.write(line);
  }

  Report& report_;
  Output& output_;
  ListingOptions options_;
  JsonArray json_;
  bool hasPrinted_ = false;
};

}  // namespace

void list(const Session& session, const std::vector<std::string>& arguments, const ListingOptions& options) {
  Lister lister(session, options);
  std::vector<std::pair<std::string, StorageItem>> folders;
  session.forEach(arguments, [&](const StorageItem& item, const std::string& argument) {
    if (item.folderExists())
      folders.emplace_back(argument, item);
    else
      lister.printItem(item, argument);
  });
  for (const auto& [argument, folder] : folders) {
    lister.printHeading(arguments.size() > 1 ? std::optional(argument) : std::nullopt);
    lister.printFolder(folder);
  }
  lister.printEnd();
}

}  // namespace fstore
