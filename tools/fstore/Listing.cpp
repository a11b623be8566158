#include <fstore/Listing.h>
#include <fstore/Text.h>

#include <fl/i18n/Convert.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::FolderEntry;
using provider::StorageItem;

namespace {

constexpr std::size_t sizeWidth = 12;
constexpr std::size_t timeWidth = 19;

/// Attributes may be asked of the store only now, when the entry may be gone.
template <class Question>
char flag(const Question& question, char yes) {
  try {
    return question() ? yes : '-';
  } catch (const std::exception&) {
    return '?';
  }
}

template <class Attributes>
std::string details(char type, const Attributes& attributes, const std::string& size) {
  const char shownType = flag([&] { return attributes.isSymlink(); }, 'l');
  std::string line{shownType == '-' ? type : shownType, flag([&] { return attributes.isWritable(); }, 'w'), ' '};
  line.append(sizeWidth - std::min(sizeWidth, size.size()), ' ').append(size).append(1, ' ');
  const auto time = timeText(attributes.getLastModified());
  return line.append(time).append(timeWidth - std::min(timeWidth, time.size()) + 1, ' ');
}

/// Of an entry that cannot be looked at.
provider::FileAttributes unknownAttributes() {
  const std::function<bool()> unknown = []() -> bool { throw std::exception(); };
  return {std::nullopt, boost::posix_time::not_a_date_time, unknown};
}

std::string details(const FolderEntry& entry) {
  if (const auto& file = entry.getFileAttributes())
    return details('-', *file, file->hasSizeAttribute() ? std::to_string(file->getSize()) : "?");
  if (const auto& folder = entry.getFolderAttributes())
    return details('d', *folder, "-");
  return details(entry.isFile() ? '-' : 'd', unknownAttributes(), "?");
}

bool isHidden(const FolderEntry& entry) {
  if (const auto& file = entry.getFileAttributes())
    return flag([&] { return file->isHidden(); }, 'h') == 'h';
  if (const auto& folder = entry.getFolderAttributes())
    return flag([&] { return folder->isHidden(); }, 'h') == 'h';
  return entry.getName().starts_with(u'.');
}

/// The entry that a file, or a link that leads nowhere, would be in a listing of its folder.
FolderEntry entryOf(const StorageItem& item, std::u16string name) {
  if (item.existsExtended() == provider::ExistenceTypeExtended::BrokenSymlink)
    return {std::move(name), unknownAttributes().withSymlinkStatusAttribute(true)};
  return {std::move(name), item.getFileAttributes()};
}

class Lister {
 public:
  Lister(const Session& session, const ListingOptions& options)
      : report_(session.report), output_(session.output), options_(options), escapes_(output_.isTerminal()) {}

  void printEntry(const FolderEntry& entry) const { output_.write(lineFor(entry)); }

  void printFolder(const StorageItem& folder) const {
    std::vector<std::pair<std::u16string, std::string>> lines;
    // What was found before a failure is shown nevertheless.
    report_.attempt(folder.getLocation(), [&] {
      forEachShown(folder, [&](const FolderEntry& entry) {
        if (options_.sorted)
          lines.emplace_back(entry.getName(), lineFor(entry));
        else
          printEntry(entry);
      });
    });
    std::sort(lines.begin(), lines.end());
    for (const auto& line : lines)
      output_.write(line.second);
  }

  void printHeading(const std::string& argument) const { output_.write(shown(fl::i18n::to_ustring(argument)) + ":\n"); }

 private:
  template <class Use>
  void forEachShown(const StorageItem& folder, const Use& use) const {
    const auto listing = options_.withDetails ? folder.listAll(u"") : folder.listAllNamesOnly(u"");
    while (listing->hasNext()) {
      listing->next();
      const auto entry = listing->current();
      if (options_.withHidden || !isHidden(entry))
        use(entry);
    }
  }

  std::string lineFor(const FolderEntry& entry) const {
    return (options_.withDetails ? details(entry) : std::string()) + shown(entry.getName()) + '\n';
  }

  /// A name may hold commands for a terminal; programs get it as it is.
  std::string shown(const std::u16string& name) const { return escapes_ ? printable(name) : fl::i18n::to_string(name); }

  Report& report_;
  Output& output_;
  ListingOptions options_;
  bool escapes_;
};

}  // namespace

void list(const Session& session, const std::vector<std::string>& arguments, const ListingOptions& options) {
  const Lister lister(session, options);
  std::vector<std::pair<std::string, StorageItem>> folders;
  bool hasPrinted = false;
  session.forEach(arguments, [&](const StorageItem& item, const std::string& argument) {
    if (item.folderExists()) {
      folders.emplace_back(argument, item);
      return;
    }
    lister.printEntry(entryOf(item, fl::i18n::to_ustring(argument)));
    hasPrinted = true;
  });
  for (const auto& [argument, folder] : folders) {
    if (std::exchange(hasPrinted, true))
      session.output.write("\n");
    if (arguments.size() > 1)
      lister.printHeading(argument);
    lister.printFolder(folder);
  }
}

}  // namespace fstore
