// Test doubles are back ends, too: one that could fail, but does not; one that gives and takes a few bytes at a
// time; one that has nothing but primitives, so that all the rest is what every back end inherits; and one that
// cannot be written to.

#include "MemoryStore.h"

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/IReadOnlyProvider.h>
#include <foundation/storage/testing/Conformance.h>
#include <foundation/storage/testing/FaultyProvider.h>
#include <foundation/storage/testing/PrimitiveProvider.h>

namespace foundation::storage::testing {
namespace {

std::shared_ptr<provider::IProvider> makeFaulty(std::optional<std::uint64_t> capacity = {}) {
  return std::make_shared<FaultyProvider>(makeMemoryProvider(capacity), std::make_shared<Faults>());
}

std::shared_ptr<provider::IProvider> makeShort() {
  const auto faults = std::make_shared<Faults>();
  for (const auto operation : {Operation::Read, Operation::Write})
    faults->shorten(operation, Faults::every, 1021);
  return std::make_shared<FaultyProvider>(makeMemoryProvider(), faults);
}

/// What another provider holds, and no change to it.
class ReadOnly final : public provider::IReadOnlyProvider {
 public:
  explicit ReadOnly(std::shared_ptr<provider::IProvider> inner) : inner_(std::move(inner)) {}
  ~ReadOnly() override { endChangePolling(); }

 private:
  using StorageIRI = provider::StorageIRI;

  bool doFileExists(const StorageIRI& location) const override { return inner_->fileExists(location); }
  bool doFolderExists(const StorageIRI& location) const override { return inner_->folderExists(location); }
  provider::FileAttributes doGetFileAttributes(const StorageIRI& location) const override {
    return inner_->getFileAttributes(location);
  }
  provider::FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override {
    return inner_->getFolderAttributes(location);
  }
  std::unique_ptr<provider::ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override {
    return inner_->openReadOnlyStream(location);
  }
  Listing doListAll(const StorageIRI& location) const override { return inner_->listAll(location, {}); }
  Listing doListFiles(const StorageIRI& location) const override { return inner_->listFiles(location, {}); }
  Listing doListFolders(const StorageIRI& location) const override { return inner_->listFolders(location, {}); }
  StorageIRI doGetCanonicalLocation(const StorageIRI& location) const override {
    return inner_->getCanonicalLocation(location);
  }

  std::shared_ptr<provider::IProvider> inner_;
};

Place makeReadOnly(const Contents& contents) {
  const auto store = makeMemoryProvider();
  const auto root = rootOf(store);
  for (const auto& [path, bytes] : contents) {
    const auto folder = provider::StorageItem(*root, path.substr(0, path.rfind(u'/') + 1));
    if (!folder.folderExists())
      folder.createFolderRecursive();
    if (!path.ends_with(u'/'))
      provider::StorageItem(*root, path).openStream({})->write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
  }
  return rootOf(std::make_shared<ReadOnly>(store));
}

std::shared_ptr<provider::IProvider> makePrimitive(std::optional<std::uint64_t> capacity = {}) {
  return std::make_shared<PrimitiveProvider>(makeMemoryProvider(capacity));
}

std::vector<BackEnd> doubles() {
  using enum Capability;
  return {
      {.name = "Faulty",
       .makeEmptyFolder = [] { return rootOf(makeFaulty()); },
       .capabilities = {Write, Append, RandomAccess, Wildcards, RecursiveListing, RecursiveRemoval, AtomicCopy,
                        AtomicReplacement, ExclusiveCreation, SetLastModified, SetWritable, StorageInfo, LimitedSpace,
                        AnyName, HugeFiles},
       .makeSmallFolder = [](std::uint64_t bytes) { return rootOf(makeFaulty(bytes)); }},
      {.name = "Short",
       .makeEmptyFolder = [] { return rootOf(makeShort()); },
       .capabilities = {Write, Append, RandomAccess, Wildcards, RecursiveListing, RecursiveRemoval, AtomicCopy,
                        AtomicReplacement, ExclusiveCreation, SetLastModified, SetWritable, StorageInfo, AnyName,
                        HugeFiles}},
      {.name = "ReadOnly",
       .makeEmptyFolder = [] { return makeReadOnly({}); },
       .capabilities = {},
       .makeFolderWith = makeReadOnly},
      // No huge files: the inherited truncation copies what stays, gaps and all.
      {.name = "Primitive",
       .makeEmptyFolder = [] { return rootOf(makePrimitive()); },
       .capabilities = {Write, Append, RandomAccess, AtomicReplacement, ExclusiveCreation, LimitedSpace, AnyName},
       .deviations = {{"Location.CanonicalStandsForAllTexts",
                       "the inherited canonical location resolves dots, but keeps empty segments"},
                      {"Copy.ToTheSameNameInAnotherStore",
                       "without identities two stores with the same locations are taken for one"}},
       .makeSmallFolder = [](std::uint64_t bytes) { return rootOf(makePrimitive(bytes)); }},
  };
}

}  // namespace
}  // namespace foundation::storage::testing

int main(int argc, char** argv) {
  using namespace foundation::storage::testing;
  return runConformance(argc, argv, doubles());
}
