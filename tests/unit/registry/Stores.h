#pragma once

#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/IReadOnlyProvider.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/registry/DefaultRegistry.h>
#include <foundation/storage/testing/FaultyProvider.h>

#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace foundation::storage::registry {

using namespace provider;

/// A container whose entries are the files of a store in memory of its own, once the file that holds it exists.
class BoxFactory final : public ContainerProviderFactory {
 public:
  /// The item that the last provider was built on.
  StorageItem lastHolder() const { return *holder_; }

  std::shared_ptr<testing::Faults> faults = std::make_shared<testing::Faults>();

 private:
  std::shared_ptr<IProvider> doBuildProvider(const StorageItem& holder) const override {
    holder_ = holder;
    if (!holder.fileExists())
      throw Exception(ErrorCode::ResourceNotFound, holder.getLocation());
    const auto memory = backend::memory::MemoryProviderFactory().buildProvider(StorageIRI(u"memory:///"));
    return std::make_shared<Box>(memory, faults);
  }
  StorageIRI doGetKey(const StorageItem& holder) const override { return holder.getLocation(); }

  /// The places in the box are those of the inner store.
  class Box final : public IReadOnlyProvider {
   public:
    Box(std::shared_ptr<IProvider> inner, std::shared_ptr<testing::Faults> faults)
        : inner_(std::make_shared<testing::FaultyProvider>(std::move(inner), std::move(faults))) {}
    ~Box() override { endChangePolling(); }

   private:
    static StorageIRI place(const StorageIRI& location) { return {StorageIRI(u"memory:///"), location.getPath()}; }
    // Whatever is asked for is there, so that boxes can be stacked.
    bool doFileExists(const StorageIRI&) const override { return true; }
    bool doFolderExists(const StorageIRI& location) const override { return inner_->folderExists(place(location)); }
    FileAttributes doGetFileAttributes(const StorageIRI& location) const override {
      return inner_->getFileAttributes(place(location));
    }
    FolderAttributes doGetFolderAttributes(const StorageIRI& location) const override {
      return inner_->getFolderAttributes(place(location));
    }
    std::unique_ptr<ByteStream> doOpenReadOnlyStream(const StorageIRI& location) const override {
      return inner_->openReadOnlyStream(place(location));
    }
    Listing doListAll(const StorageIRI& location) const override { return inner_->listAll(place(location), {}); }
    Listing doListFiles(const StorageIRI& location) const override { return inner_->listFiles(place(location), {}); }
    Listing doListFolders(const StorageIRI& location) const override {
      return inner_->listFolders(place(location), {});
    }
    void doShutdown() override { inner_->shutdown(); }

    std::shared_ptr<IProvider> inner_;
  };

  mutable std::optional<StorageItem> holder_;
};

inline void put(const StorageItem& file, const std::string& bytes) {
  const auto stream = file.openStream({});
  ASSERT_EQ(stream->write(bytes.data(), static_cast<std::int64_t>(bytes.size())),
            static_cast<std::int64_t>(bytes.size()));
  stream->close();
}

inline std::string contentOf(const StorageItem& file) {
  std::string bytes(file.getFileAttributes().getSize(), '\0');
  const auto got = file.openReadOnlyStream()->read(bytes.data(), static_cast<std::int64_t>(bytes.size()));
  return bytes.substr(0, got < 0 ? 0 : static_cast<std::size_t>(got));
}

/// The `Exception` that `action` throws.
template <class Action>
Exception thrownBy(const Action& action) {
  try {
    action();
  } catch (const Exception& failure) {
    return failure;
  }
  ADD_FAILURE() << "nothing was thrown";
  return {ErrorCode::Unknown, StorageIRI(u"nothing:/")};
}

}  // namespace foundation::storage::registry
