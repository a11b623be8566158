#pragma once

#include "TemporaryFolder.h"

#include <foundation/storage/provider/CopyFileOptions.h>
#include <foundation/storage/provider/extensions/IFileIdentity.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace foundation::storage::backend::local {

/// What a folder that a provider must not lead to can be told by, wherever it turns up: in contents, names and
/// attributes' values, as the size of its file, as the year in which it was changed.
inline const std::string secret = "SECRET";
constexpr std::size_t secretSize = 7919;
constexpr int secretYear = 2001;

/// What an operation is tried on, and what it may need besides: entries of the same provider that do no harm.
struct Subject {
  std::shared_ptr<IProvider> provider;
  StorageItem item;
  StorageItem file;
  StorageItem folder;
  StorageItem absent;
  std::set<std::u16string> secretIdentities = {};
};

/// What an operation does with a link at the end of its location.
enum class AtLink { Follows, TakesTheLink, NeverFails };

struct Operation {
  std::string name;
  AtLink atLink;
  std::function<std::string(const Subject&)> run;  ///< tells what it learnt
};

template <class... Values>
std::string text(const Values&... values) {
  std::ostringstream out;
  ((out << values << ' '), ...);
  return out.str();
}

template <class Attributes>
std::string told(const Attributes& attributes) {
  const auto time = attributes.getLastModified();
  return text("year", time.date().year(), attributes.isHidden(), attributes.isSymlink(), attributes.isWritable());
}

inline std::string told(IProvider::Listing listing) {
  std::set<std::string> lines;
  while (listing->hasNext()) {
    listing->next();
    const auto entry = listing->current();
    auto line = text(fl::i18n::to_string(entry.getName()), entry.isFile());
    if (const auto& file = entry.getFileAttributes())
      line += text(told(*file), "size", file->getSize());
    if (const auto& folder = entry.getFolderAttributes())
      line += told(*folder);
    lines.insert(line + "\n");
  }
  std::string all;
  for (const auto& line : lines)
    all += line;
  return all;
}

template <class Stream>
std::string contentOf(Stream& stream) {
  std::string bytes(2 * secretSize, '\0');
  const auto size = stream.read(bytes.data(), static_cast<std::int64_t>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(std::max<std::int64_t>(size, 0)));  // -1 at the end
  return bytes;
}

constexpr ByteStreamOpenOptions readAndWrite{ByteStreamAccess::ReadWrite, ByteStreamCreate::Create,
                                             ByteStreamTruncate::PreserveExisting, ByteStreamAppend::Overwrite};

inline std::string rewrite(const StorageItem& item, const ByteStreamOpenOptions& options) {
  const auto stream = item.openStream(options);
  const auto before = options.access == ByteStreamAccess::ReadWrite ? contentOf(*stream) : "";
  stream->write("new", 3);
  stream->close();
  return before;
}

inline std::string replace(const StorageItem& item, StreamClosePolicy policy) {
  const auto stream = item.openTransactionalStream({});
  stream->write("new", 3);
  stream->close(policy);
  return {};
}

inline std::string identity(const Subject& subject) {
  const auto& identities = dynamic_cast<const extensions::IFileIdentity&>(*subject.provider);
  return subject.secretIdentities.contains(identities.getFileIdentity(subject.item.getLocation())) ? secret : "";
}

inline std::string attributesOf(const StorageItem& item) {
  std::string all;
  for (const auto& [name, value] : item.getExtendedAttributes())
    all += text(name, boost::any_cast<std::string>(value));
  return all;
}

/// An operation of which there is nothing to learn.
template <class Action>
std::function<std::string(const Subject&)> quiet(const Action& action) {
  return [action](const Subject& subject) {
    action(subject);
    return std::string();
  };
}

/// Every operation that takes a location, those with two for each of them.
inline std::vector<Operation> everyOperation() {
  using enum AtLink;
  using S = const Subject&;
  const auto overwrite = ReplacementPolicy::Overwrite;
  const auto preserve = ReplacementPolicy::Preserve;
  const auto copy = [](const StorageItem& from, const StorageItem& to, TransactionPolicy atomicity) {
    from.copyFile(to, CopyFileOptions{ReplacementPolicy::Overwrite, atomicity, nullptr});
  };
  const boost::posix_time::ptime time(boost::gregorian::date(1999, 1, 1));
  std::vector<Operation> all{
      {"createFile", TakesTheLink, quiet([](S s) { s.item.createFile(); })},
      {"createFolder", TakesTheLink, quiet([](S s) { s.item.createFolder(); })},
      {"createFolderRecursive", TakesTheLink, quiet([](S s) { s.item.createFolderRecursive(); })},
      {"fileExists", Follows, [](S s) { return text(s.item.fileExists()); }},
      {"folderExists", Follows, [](S s) { return text(s.item.folderExists()); }},
      {"exists", Follows, [](S s) { return text(s.item.exists()); }},
      {"existsExtended", TakesTheLink, [](S s) { return text(s.item.existsExtended()); }},
      {"getFileAttributes", Follows,
       [](S s) {
         const auto attributes = s.item.getFileAttributes();
         return told(attributes) + text("size", attributes.getSize());
       }},
      {"getFolderAttributes", Follows, [](S s) { return told(s.item.getFolderAttributes()); }},
      {"getExtendedAttributes", Follows, [](S s) { return attributesOf(s.item); }},
      {"read", Follows, [](S s) { return contentOf(*s.item.openReadOnlyStream()); }},
      {"write", Follows, [](S s) { return rewrite(s.item, {}); }},
      {"read and write", Follows, [](S s) { return rewrite(s.item, readAndWrite); }},
      {"commit", Follows, [](S s) { return replace(s.item, StreamClosePolicy::Commit); }},
      {"abort", Follows, [](S s) { return replace(s.item, StreamClosePolicy::Abort); }},
      {"removeFile", TakesTheLink, quiet([](S s) { s.item.removeFile(); })},
      {"removeFolder", TakesTheLink, quiet([](S s) { s.item.removeFolder(); })},
      {"removeFolderRecursively", TakesTheLink, quiet([](S s) { s.item.removeFolderRecursively(); })},
      {"moveFile from", TakesTheLink, quiet([=](S s) { s.item.moveFile(s.absent.getLocation(), preserve); })},
      {"moveFile to", TakesTheLink, quiet([=](S s) { s.file.moveFile(s.item.getLocation(), overwrite); })},
      {"moveFile to nothing", TakesTheLink, quiet([=](S s) { s.file.moveFile(s.item.getLocation(), preserve); })},
      {"moveFolder from", TakesTheLink, quiet([=](S s) { s.item.moveFolder(s.absent.getLocation(), preserve); })},
      {"moveFolder to", TakesTheLink, quiet([=](S s) { s.folder.moveFolder(s.item.getLocation(), overwrite); })},
      {"copyFile from", Follows, quiet([=](S s) { copy(s.item, s.absent, TransactionPolicy::NonAtomic); })},
      {"copyFile to", Follows, quiet([=](S s) { copy(s.file, s.item, TransactionPolicy::NonAtomic); })},
      {"copyFile to nothing", Follows, quiet([=](S s) { s.file.copyFile(s.item, preserve); })},
      {"atomic copy from", Follows, quiet([=](S s) { copy(s.item, s.absent, TransactionPolicy::Atomic); })},
      {"atomic copy to", Follows, quiet([=](S s) { copy(s.file, s.item, TransactionPolicy::Atomic); })},
      {"truncateToSize", Follows, quiet([](S s) { s.item.truncateToSize(2); })},
      {"setLastModified", Follows, quiet([=](S s) { s.item.setLastModified(time); })},
      {"setWritable", Follows, quiet([](S s) { s.item.setWritable(false); })},
      {"getProviderStorageInfo", Follows, quiet([](S s) { s.item.getProviderStorageInfo(); })},
      {"getCanonicalLocation", Follows,
       [](S s) { return fl::i18n::to_string(s.item.getCanonicalLocation().getPath()); }},
      {"getFilenameSensitivity", NeverFails, [](S s) { return text(s.item.getFilenameSensitivity().isCaseSensitive); }},
      {"getPathComparator", NeverFails,
       [](S s) { return text(s.item.getPathComparator()(u"a", u"A", CaseModifier::None)); }},
      {"getFileIdentity", Follows, identity},
  };
  using List = IProvider::Listing (StorageItem::*)(std::u16string) const;
  const std::pair<const char*, List> listings[] = {
      {"listAll", &StorageItem::listAll},
      {"listFiles", &StorageItem::listFiles},
      {"listFolders", &StorageItem::listFolders},
      {"listAllNamesOnly", &StorageItem::listAllNamesOnly},
      {"listFilesNamesOnly", &StorageItem::listFilesNamesOnly},
      {"listFoldersNamesOnly", &StorageItem::listFoldersNamesOnly},
      {"listAllRecursive", &StorageItem::listAllRecursive},
      {"listAllRecursiveNamesOnly", &StorageItem::listAllRecursiveNamesOnly}};
  for (const auto& [name, list] : listings)
    for (const std::u16string wildcard : {u"", u"*"})
      all.push_back({name + fl::i18n::to_string(wildcard), Follows,
                     [list = list, wildcard](S s) { return told((s.item.*list)(wildcard)); }});
  return all;
}

}  // namespace foundation::storage::backend::local
