#pragma once

#include "support/MemoryStream.h"
#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/IProvider.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace foundation::storage::provider::test {

class Entries final : public IFolderEntryIterator {
 public:
  explicit Entries(std::vector<FolderEntry> entries) : entries_(std::move(entries)) {}
  FolderEntry current() const override { return entries_.at(next_ - 1); }
  bool hasNext() const override { return next_ < entries_.size(); }
  void next() override { ++next_; }
  void reset() override { next_ = 0; }

 private:
  std::vector<FolderEntry> entries_;
  std::size_t next_ = 0;
};

/// Files and folders in a map, with the primitives only: everything else is what `Base` makes of them.
/// Not a model for real back ends: it looks at paths alone, and checks no more than the tests need.
template <class Base>
class BasicMemoryProvider : public Base {
 public:
  explicit BasicMemoryProvider(std::shared_ptr<Script> script = std::make_shared<Script>())
      : script_(std::move(script)) {}

  Script& script() const { return *script_; }
  void put(const std::u16string& path, std::string content) const {
    files_[path] = std::make_shared<std::string>(std::move(content));
  }
  /// Null where there is no such file.
  const std::string* contentOf(const std::u16string& path) const {
    const auto found = files_.find(path);
    return found == files_.end() ? nullptr : found->second.get();
  }
  std::size_t countFiles() const { return files_.size(); }
  void removeRoot() const { folders_.clear(); }

 protected:
  using Listing = IProvider::Listing;

  bool doFileExists(const StorageIRI& location) const override {
    note("fileExists", location);
    return contentOf(key(location)) != nullptr;
  }
  bool doFolderExists(const StorageIRI& location) const override { return folders_.contains(key(location)); }
  FileAttributes doGetFileAttributes(const StorageIRI& location) const override {
    return {existing(location)->size(), {}, true};
  }
  FolderAttributes doGetFolderAttributes(const StorageIRI&) const override { return {{}, true}; }
  std::unique_ptr<ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override {
    note("openReadOnly", location);
    return std::make_unique<MemoryStream>(existing(location), script_, name(location) + " ");
  }
  Listing doListAll(const StorageIRI&) const override {
    return list({FolderEntry(u"f.x", FolderEntry::EntryType::File), FolderEntry(u"d", FolderEntry::EntryType::Folder)});
  }
  Listing doListFiles(const StorageIRI&) const override {
    return list({FolderEntry(u"f.x", FolderEntry::EntryType::File)});
  }
  Listing doListFolders(const StorageIRI&) const override {
    return list({FolderEntry(u"d", FolderEntry::EntryType::Folder)});
  }

  static Listing list(std::vector<FolderEntry> entries) { return std::make_unique<Entries>(std::move(entries)); }
  static std::u16string key(const StorageIRI& location) {
    auto path = location.getPath();
    if (path.size() > 1 && path.back() == u'/')
      path.pop_back();
    return path;
  }
  static std::string name(const StorageIRI& location) { return fl::i18n::to_string(key(location)); }
  void note(const std::string& operation, const StorageIRI& location) const {
    script_->add(operation + " " + name(location));
  }
  std::shared_ptr<std::string> existing(const StorageIRI& location) const {
    const auto found = files_.find(key(location));
    if (found == files_.end())
      throw Exception(ErrorCode::ResourceNotFound, location);
    return found->second;
  }

  mutable std::map<std::u16string, std::shared_ptr<std::string>> files_;
  mutable std::map<std::u16string, bool> folders_{{u"/", true}};
  std::shared_ptr<Script> script_;
};

class MemoryProvider : public BasicMemoryProvider<IProvider> {
 public:
  using BasicMemoryProvider::BasicMemoryProvider;

 private:
  void doCreateFile(const StorageIRI& location) const override { put(key(location), ""); }
  void doCreateFolder(const StorageIRI& location) const override {
    note("createFolder", location);
    if (!folders_.try_emplace(key(location), true).second)
      throw Exception(ErrorCode::ResourceAlreadyExists, location);
  }
  void doRemoveFile(const StorageIRI& location) const override { files_.erase(key(location)); }
  void doRemoveFolder(const StorageIRI& location) const override { folders_.erase(key(location)); }
  void doMoveFile(const StorageIRI& from, const StorageIRI& to, const ReplacementPolicy& policy) const override {
    script_->add(policy == ReplacementPolicy::Overwrite ? "moveOver " + name(to) : "move " + name(to));
    files_[key(to)] = existing(from);
    files_.erase(key(from));
  }
  void doMoveFolder(const StorageIRI& from, const StorageIRI&, const ReplacementPolicy&) const override {
    note("moveFolder", from);
  }
  std::unique_ptr<ByteStream> doOpenStream(const StorageIRI& location,
                                           const ByteStreamOpenOptions& options) const override {
    std::ostringstream text;
    text << "open " << name(location) << ' ' << static_cast<int>(options.access) << static_cast<int>(options.create)
         << static_cast<int>(options.truncate) << static_cast<int>(options.append);
    script_->add(text.str());
    auto& content = files_[key(location)];
    if (content == nullptr || options.truncate == ByteStreamTruncate::TruncateExisting)
      content = std::make_shared<std::string>();
    return std::make_unique<MemoryStream>(content, script_, name(location) + " ",
                                          options.append == ByteStreamAppend::Append);
  }
};

}  // namespace foundation::storage::provider::test
