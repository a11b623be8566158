#pragma once

#include <foundation/storage/provider/IProvider.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace example {

namespace provider = foundation::storage::provider;

/// A small but complete back end: files in a dictionary, as object stores keep them. A file is replaced as a
/// whole when a writing stream is closed, so streams append or write anew, and do not patch.
class DictionaryProvider final : public provider::IProvider {
 public:
  /// @param root  of all locations that it serves, `dictionary://HOST/`
  explicit DictionaryProvider(provider::StorageIRI root);
  ~DictionaryProvider() override;

  // [entries]
  /// The bytes of a file, shared with the streams that read it.
  using Content = std::shared_ptr<const std::string>;
  /// A file's content, or nothing for a folder.
  using Entry = std::optional<Content>;
  /// By path: "/folder/file". The root is not in it; it always exists.
  using Entries = std::map<std::u16string, Entry>;
  // [entries]

 private:
  using StorageIRI = provider::StorageIRI;
  using ReplacementPolicy = provider::ReplacementPolicy;

  // [primitives]
  void doCreateFile(const StorageIRI& location) const override;
  void doCreateFolder(const StorageIRI& location) const override;
  bool doFileExists(const StorageIRI& location) const override;
  bool doFolderExists(const StorageIRI& location) const override;
  void doRemoveFile(const StorageIRI& location) const override;
  void doMoveFile(const StorageIRI& source, const StorageIRI& destination,
                  const ReplacementPolicy& policy) const override;
  void doRemoveFolder(const StorageIRI& location) const override;
  void doMoveFolder(const StorageIRI& source, const StorageIRI& destination,
                    const ReplacementPolicy& policy) const override;
  provider::FileAttributes doGetFileAttributes(const StorageIRI& location) const override;
  provider::FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override;
  std::unique_ptr<provider::ByteStream> doOpenStream(const StorageIRI& location,
                                                     const provider::ByteStreamOpenOptions& options) const override;
  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override;
  Listing doListAll(const StorageIRI& location) const override;
  Listing doListFiles(const StorageIRI& location) const override;
  Listing doListFolders(const StorageIRI& location) const override;
  // [primitives]

  StorageIRI doGetCanonicalLocation(const StorageIRI& location) const override;

  struct Store;
  const std::shared_ptr<Store> store_;  ///< streams and listings hold it, too
};

// [factory]
/// Makes the provider of the scheme `dictionary`: one dictionary for each host, `dictionary://HOST/`, that lives
/// as long as somebody holds its provider.
class DictionaryProviderFactory final : public provider::PhysicalProviderFactory {
 public:
  DictionaryProviderFactory();
  ~DictionaryProviderFactory() override;

 private:
  std::shared_ptr<provider::IProvider> doBuildProvider(const provider::StorageIRI& location) const override;
  /// The root of the dictionary that the location is in.
  provider::StorageIRI doGetKey(const provider::StorageIRI& location) const override;
};
// [factory]

}  // namespace example
