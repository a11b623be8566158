#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/library/LibraryArchive.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/testing/FaultyProvider.h>

#include <gtest/gtest.h>
#include <support/ProgramFolder.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

using provider::ErrorCode;
using testing::Faults;
using testing::Operation;
using Archive = std::shared_ptr<const StoredArchive>;

/// Tests in a folder in which other programs make archives, and read what is written.
class LibraryTest : public ::testing::Test {
 protected:
  provider::StorageItem item(const std::string& name) const {
    return {root_, provider::toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(folder.native(name))))};
  }
  std::shared_ptr<Container> container(const std::string& name) const {
    return std::make_shared<Container>(item(name));
  }
  Archive read(const std::string& name, ArchiveFormat format = ArchiveFormat::Tar, const Limits& limits = {}) const {
    return readLibraryArchive(format, container(name), limits);
  }

  /// Lets every read give that many bytes at most, and counts from now on.
  void countReads(std::int64_t bytes) const {
    faults->clear();
    faults->shorten(Operation::Read, Faults::every, bytes);
  }

  /// Bytes that no compression shortens much, always the same.
  static std::string noise(std::size_t count, std::uint64_t seed = 1) {
    std::string bytes;
    while (bytes.size() < count) {
      seed = seed * 6364136223846793005u + 1442695040888963407u;
      bytes += static_cast<char>(seed >> 56);
    }
    return bytes;
  }

  const testing::ProgramFolder folder;
  const std::shared_ptr<Faults> faults = std::make_shared<Faults>();

 private:
  const provider::StorageIRI rootLocation_ =
      provider::toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(folder.path())));
  const provider::StorageItem root_{
      std::make_shared<testing::FaultyProvider>(local::LocalProviderFactory().buildProvider(rootLocation_), faults),
      rootLocation_};
};

inline std::string contentOf(ContentReader& reader, std::size_t piece = 10'000) {
  std::string bytes;
  std::string buffer(piece, '\0');
  while (const auto got = reader.read(buffer.data(), buffer.size()))
    bytes.append(buffer, 0, got);
  return bytes;
}

/// The number of the last entry of that name.
inline std::size_t numberOf(const StoredArchive& archive, const std::string& name) {
  std::optional<std::size_t> number;
  for (std::size_t i = 0; i < archive.entries().size(); ++i)
    if (plainName(archive.entries()[i].name) == plainName(name))
      number = i;
  EXPECT_TRUE(number) << name;
  return number.value_or(0);
}

inline const Entry& entryOf(const StoredArchive& archive, const std::string& name) {
  return archive.entries().at(numberOf(archive, name));
}

/// As whoever reads an entry does it: what a hard link leads to.
inline std::string contentOf(const StoredArchive& archive, std::size_t number) {
  return contentOf(*archive.open(archive.entries()[number].hardLinkTo.value_or(number)));
}
inline std::string contentOf(const StoredArchive& archive, const std::string& name) {
  return contentOf(archive, numberOf(archive, name));
}

/// The contents of all files by name.
inline std::map<std::string, std::string> filesIn(const StoredArchive& archive) {
  std::map<std::string, std::string> files;
  for (std::size_t i = 0; i < archive.entries().size(); ++i)
    if (archive.entries()[i].kind == EntryKind::File)
      files[plainName(archive.entries()[i].name)] = contentOf(archive, i);
  return files;
}

/// The code of the fault that `action` throws.
template <class Action>
std::optional<ErrorCode> faultOf(const Action& action) {
  try {
    action();
  } catch (const Fault& fault) {
    EXPECT_STRNE(fault.what(), "");
    return fault.code();
  }
  return std::nullopt;
}

}  // namespace foundation::storage::backend::archive::detail::library
