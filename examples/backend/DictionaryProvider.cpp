#include "DictionaryProvider.h"

#include <foundation/network/IRIArgs.h>
#include <foundation/storage/backend/support/EntryList.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>
#include <utility>

namespace example {

using namespace provider;

namespace {

// [failures]
/// A refusal, with the reason in words for whoever reads the report.
Exception refusal(ErrorCode code, const StorageIRI& location, std::u16string reason) {
  Exception failure(code, location);
  failure.setExceptionContexts({ExceptionContext(u"dictionary", ExceptionContextInfo(std::move(reason), {}, {}))});
  return failure;
}
// [failures]

// [paths]
/// The root of the store that a location is in.
StorageIRI rootOf(const StorageIRI& location) {
  if (location.isOpaque() || location.getScheme() != u"dictionary")
    throw refusal(ErrorCode::InvalidLocation, location, u"This store serves dictionary://HOST/PATH.");
  const auto iri = location.toIRI();
  if (iri.hasQuery() || iri.hasFragment() || iri.hasUserInfo() || iri.hasPort())
    throw refusal(ErrorCode::InvalidLocation, location, u"A dictionary is named by its host alone.");
  foundation::network::IRIArgs root;
  root.setScheme(u"dictionary").setHost(location.getHost()).setPath(u"/");
  return StorageIRI(foundation::network::IRI(root));
}

/// The path as the dictionary has it: dots resolved, one '/' before each name, "" for the root.
std::u16string keyOf(const StorageIRI& root, const StorageIRI& location) {
  if (rootOf(location) != root)
    throw refusal(ErrorCode::InvalidLocation, location, u"This is a place in another store.");
  std::u16string key;
  for (const char16_t unit : location.getResolvedPath())
    if (unit != u'/' || !key.ends_with(u'/'))
      key.push_back(unit);
  if (key.ends_with(u'/'))
    key.pop_back();
  return key;
}

std::u16string parentOf(const std::u16string& key) { return key.substr(0, key.rfind(u'/')); }
std::u16string nameOf(const std::u16string& key) { return key.substr(key.rfind(u'/') + 1); }
// [paths]

/// A file being read: the content it had when it was opened.
class Reader final : public ByteStream {
 public:
  explicit Reader(DictionaryProvider::Content content) : content_(std::move(content)) {}

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override {
    if (!content_ || count < 0)
      throw ByteStreamReadFailure("The stream is closed, or the count negative", ErrorCode::IOError);
    const auto size = static_cast<std::int64_t>(content_->size());
    const auto got = std::min(count, size - std::min(position_, size));
    std::copy_n(content_->data() + std::min(position_, size), got, buffer);
    position_ += got;
    return got == 0 && count > 0 ? -1 : got;
  }
  std::int64_t doWrite(const char*, std::int64_t) override {
    throw ByteStreamWriteFailure("The stream was opened for reading", ErrorCode::IOError);
  }
  std::streampos doSeek(std::int64_t offset, int origin) override {
    if (!content_ || origin < std::ios_base::beg || origin > std::ios_base::end)
      throw ByteStreamSeekFailure("The stream is closed, or the origin unknown", ErrorCode::IOError);
    const std::int64_t bases[] = {0, position_, static_cast<std::int64_t>(content_->size())};
    if (offset < -bases[origin] || offset > std::numeric_limits<std::int64_t>::max() - bases[origin])
      throw ByteStreamSeekFailure("The position lies before the beginning, or beyond all sizes", ErrorCode::IOError);
    return position_ = bases[origin] + offset;
  }
  void doClose() override { content_.reset(); }

  DictionaryProvider::Content content_;
  std::int64_t position_ = 0;
};

/// A file being written, published when it is closed.
class Writer final : public ByteStream {
 public:
  using Publish = std::function<void(std::string content)>;

  Writer(std::string content, Publish publish) : content_(std::move(content)), publish_(std::move(publish)) {}

 private:
  std::int64_t doRead(char*, std::int64_t) override { return -1; }
  std::int64_t doWrite(const char* buffer, std::int64_t count) override {
    if (!publish_ || count < 0)
      throw ByteStreamWriteFailure("The stream is closed, or the count negative", ErrorCode::IOError);
    content_.append(buffer, static_cast<std::size_t>(count));
    return count;
  }
  std::streampos doSeek(std::int64_t, int) override {
    throw ByteStreamSeekFailure("A dictionary's files are written in order", ErrorCode::UnsupportedOperation);
  }
  void doClose() override {
    if (const auto publish = std::exchange(publish_, nullptr))
      publish(std::move(content_));
  }

  std::string content_;
  Publish publish_;
};

}  // namespace

// [store]
/// The dictionary and what may be done to it. Everything is done under the one mutex.
struct DictionaryProvider::Store {
  explicit Store(StorageIRI storeRoot) : root(std::move(storeRoot)) {}

  std::u16string keyOf(const StorageIRI& location) const { return example::keyOf(root, location); }

  /// Runs `action(entries)`, alone.
  template <class Action>
  auto alone(const Action& action) {
    const std::scoped_lock lock(mutex_);
    return action(entries_);
  }

  static bool isFolder(const Entries& entries, const std::u16string& key) {
    const auto found = entries.find(key);
    return key.empty() || (found != entries.end() && !found->second);
  }

  /// Throws unless something may be put at `location`: in an existing folder, over nothing.
  std::u16string requireFree(const Entries& entries, const StorageIRI& location) const {
    auto key = keyOf(location);
    if (key.empty() || entries.contains(key))
      throw refusal(ErrorCode::ResourceAlreadyExists, location, u"Something is there.");
    requireFolderAbove(entries, location, key);
    return key;
  }

  static void requireFolderAbove(const Entries& entries, const StorageIRI& location, const std::u16string& key) {
    for (auto above = parentOf(key); !isFolder(entries, above); above = parentOf(above))
      if (entries.contains(above))
        throw refusal(ErrorCode::InvalidLocation, location, u"The path leads through a file.");
    if (!isFolder(entries, parentOf(key)))
      throw refusal(ErrorCode::ResourceNotFound, location, u"There is no such folder.");
  }

  /// Throws unless a file (or, as asked, a folder) is there.
  std::u16string require(const Entries& entries, const StorageIRI& location, bool asFolder) const {
    auto key = keyOf(location);
    if (isFolder(entries, key) == asFolder && (asFolder || entries.contains(key)))
      return key;
    if (key.empty() || entries.contains(key))
      throw refusal(ErrorCode::InvalidLocation, location, asFolder ? u"This is a file." : u"This is a folder.");
    requireFolderAbove(entries, location, key);
    throw refusal(ErrorCode::ResourceNotFound, location, u"Nothing is there.");
  }

  /// Everything below a folder, at any depth.
  static auto below(Entries& entries, const std::u16string& key) {
    // '0' follows '/'.
    return std::pair(entries.lower_bound(key + u"/"), entries.lower_bound(key + u"0"));
  }

  const StorageIRI root;

 private:
  std::mutex mutex_;
  Entries entries_;
};
// [store]

DictionaryProvider::DictionaryProvider(StorageIRI root) : store_(std::make_shared<Store>(std::move(root))) {}
DictionaryProvider::~DictionaryProvider() { endChangePolling(); }

// [create]
void DictionaryProvider::doCreateFile(const StorageIRI& location) const {
  store_->alone([&](Entries& entries) {
    entries[store_->requireFree(entries, location)] = std::make_shared<const std::string>();
  });
}

void DictionaryProvider::doCreateFolder(const StorageIRI& location) const {
  store_->alone([&](Entries& entries) { entries[store_->requireFree(entries, location)] = std::nullopt; });
}
// [create]

bool DictionaryProvider::doFileExists(const StorageIRI& location) const {
  const auto key = store_->keyOf(location);
  return store_->alone([&](Entries& entries) { return entries.contains(key) && !Store::isFolder(entries, key); });
}

bool DictionaryProvider::doFolderExists(const StorageIRI& location) const {
  const auto key = store_->keyOf(location);
  return store_->alone([&](Entries& entries) { return Store::isFolder(entries, key); });
}

void DictionaryProvider::doRemoveFile(const StorageIRI& location) const {
  store_->alone([&](Entries& entries) { entries.erase(store_->require(entries, location, false)); });
}

void DictionaryProvider::doRemoveFolder(const StorageIRI& location) const {
  store_->alone([&](Entries& entries) {
    const auto key = store_->require(entries, location, true);
    const auto [first, last] = Store::below(entries, key);
    if (first != last)
      throw refusal(ErrorCode::FolderNotEmpty, location, u"The folder is not empty.");
    if (entries.erase(key) == 0)
      throw refusal(ErrorCode::InvalidLocation, location, u"The root stays.");
  });
}

void DictionaryProvider::doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                                    const ReplacementPolicy& policy) const {
  store_->alone([&](Entries& entries) {
    const auto from = store_->require(entries, source, false);
    const auto to = store_->keyOf(destination);
    if (!entries.contains(to) || preservesExisting(policy))
      store_->requireFree(entries, destination);
    else
      store_->require(entries, destination, false);
    entries[to] = *entries.at(from);
    if (from != to)
      entries.erase(from);
  });
}

void DictionaryProvider::doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                                      const ReplacementPolicy& policy) const {
  store_->alone([&](Entries& entries) {
    const auto from = store_->require(entries, source, true);
    const auto to = store_->keyOf(destination);
    if (from.empty() || to.starts_with(from + u"/"))
      throw refusal(ErrorCode::InvalidLocation, destination, u"A folder cannot be moved into itself.");
    if (!entries.contains(to) || preservesExisting(policy))
      store_->requireFree(entries, destination);
    else
      store_->require(entries, destination, true);
    if (from == to)
      return;
    if (const auto [first, last] = Store::below(entries, to); first != last)
      throw refusal(ErrorCode::FolderNotEmpty, destination, u"The folder is not empty.");
    const auto [first, last] = Store::below(entries, from);
    Entries moved{{to, std::nullopt}};
    for (auto entry = first; entry != last; ++entry)
      moved[to + entry->first.substr(from.size())] = entry->second;
    entries.erase(first, last);
    entries.erase(from);
    entries.merge(moved);
  });
}

FileAttributes DictionaryProvider::doGetFileAttributes(const StorageIRI& location) const {
  return store_->alone([&](Entries& entries) {
    const auto& content = *entries.at(store_->require(entries, location, false));
    return FileAttributes(content->size(), {}, true);
  });
}

FolderAttributes DictionaryProvider::doGetFolderAttributes(const StorageIRI& location) const {
  return store_->alone([&](Entries& entries) {
    store_->require(entries, location, true);
    return FolderAttributes({}, true);
  });
}

// [streams]
std::unique_ptr<ByteStream> DictionaryProvider::doOpenReadOnlyStream(const StorageIRI& location) const {
  return store_->alone([&](Entries& entries) {
    return std::make_unique<Reader>(*entries.at(store_->require(entries, location, false)));
  });
}

std::unique_ptr<ByteStream> DictionaryProvider::doOpenStream(const StorageIRI& location,
                                                             const ByteStreamOpenOptions& options) const {
  const bool keeps = options.truncate == ByteStreamTruncate::PreserveExisting;
  if (keeps && options.append == ByteStreamAppend::Overwrite)
    throw refusal(ErrorCode::UnsupportedOperation, location, u"A dictionary's files are written anew or appended to.");
  auto content = store_->alone([&](Entries& entries) {
    if (!entries.contains(store_->keyOf(location)) && options.create == ByteStreamCreate::Create) {
      store_->requireFree(entries, location);
      return std::string();
    }
    const auto& existing = *entries.at(store_->require(entries, location, false));
    return keeps ? *existing : std::string();
  });
  return std::make_unique<Writer>(std::move(content), [store = store_, location](std::string written) {
    store->alone([&](Entries& entries) {
      const auto key = store->keyOf(location);
      if (!entries.contains(key))
        store->requireFree(entries, location);
      else
        store->require(entries, location, false);
      entries[key] = std::make_shared<const std::string>(std::move(written));
    });
  });
}
// [streams]

// [listings]
namespace {

/// What lies directly in a folder and passes the filter.
template <class Store>
IProvider::Listing list(const std::shared_ptr<Store>& store, const StorageIRI& location,
                        bool (*passes)(const FolderEntry& entry)) {
  const auto read = [store, location, passes] {
    return store->alone([&](DictionaryProvider::Entries& entries) {
      const auto folder = store->require(entries, location, true);
      std::vector<FolderEntry> found;
      const auto [first, last] = Store::below(entries, folder);
      for (auto entry = first; entry != last; ++entry) {
        if (parentOf(entry->first) != folder)
          continue;
        FolderEntry made = entry->second
                               ? FolderEntry(nameOf(entry->first), FileAttributes((*entry->second)->size(), {}, true))
                               : FolderEntry(nameOf(entry->first), FolderAttributes({}, true));
        if (passes(made))
          found.push_back(std::move(made));
      }
      return found;
    });
  };
  return std::make_unique<foundation::storage::backend::support::EntryList>(read);
}

}  // namespace

IProvider::Listing DictionaryProvider::doListAll(const StorageIRI& location) const {
  return list(store_, location, [](const FolderEntry&) { return true; });
}

IProvider::Listing DictionaryProvider::doListFiles(const StorageIRI& location) const {
  return list(store_, location, [](const FolderEntry& entry) { return entry.isFile(); });
}

IProvider::Listing DictionaryProvider::doListFolders(const StorageIRI& location) const {
  return list(store_, location, [](const FolderEntry& entry) { return !entry.isFile(); });
}
// [listings]

StorageIRI DictionaryProvider::doGetCanonicalLocation(const StorageIRI& location) const {
  const auto key = store_->keyOf(location);
  return StorageIRI(store_->root, key.empty() ? u"/" : key);
}

// [factory]
DictionaryProviderFactory::DictionaryProviderFactory() = default;
DictionaryProviderFactory::~DictionaryProviderFactory() = default;

std::shared_ptr<IProvider> DictionaryProviderFactory::doBuildProvider(const StorageIRI& location) const {
  return std::make_shared<DictionaryProvider>(rootOf(location));
}

StorageIRI DictionaryProviderFactory::doGetKey(const StorageIRI& location) const { return rootOf(location); }
// [factory]

}  // namespace example
