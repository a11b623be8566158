#pragma once

#include <foundation/storage/backend/archive/detail/Budget.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>
#include <foundation/storage/backend/archive/detail/zip/DirectoryEnd.h>
#include <foundation/storage/backend/archive/detail/zip/Member.h>

#include <memory>
#include <string>
#include <vector>

namespace foundation::storage::backend::archive::detail::zip {

/// Where an entry's bytes lie in the file, found by its local header.
struct Extent {
  std::string localExtra;  ///< the extra fields of the local header
  std::uint64_t position;  ///< of the content
  std::uint64_t size;      ///< of the content as it is stored
};

/// A zip, by its directory, which is kept as it is stored: so nothing of it is lost when the archive is written anew.
class ZipArchive final : public StoredArchive {
 public:
  /// @param directory  all records, of which `end` tells
  /// Throws `Fault` where they are none, or more than may be.
  ZipArchive(std::shared_ptr<Container> container, const Limits& limits, DirectoryEnd end, std::string directory);

  const std::vector<Entry>& entries() const override { return entries_; }
  /// Throws `Fault` for what is encrypted, and what the entry's local header contradicts.
  std::unique_ptr<ContentReader> open(std::size_t number) const override;

  const Member& member(std::size_t number) const { return members_[number]; }
  /// The file that it lies in.
  Container& container() const { return *container_; }
  const std::string& comment() const { return end_.comment; }
  /// What was put before the archive, in bytes: the program of one that extracts itself, for example.
  std::uint64_t prefixSize() const;
  /// Throws `Fault` where the local header is not where the directory says, or says otherwise.
  Extent extent(std::size_t number, Input& input) const;

 private:
  void readRecords();
  void findOverlaps();

  const std::shared_ptr<Container> container_;
  const Limits limits_;
  const DirectoryEnd end_;
  const std::string directory_;
  std::vector<Entry> entries_;
  std::vector<Member> members_;  ///< by the same numbers
  std::unique_ptr<Budget> budget_;
};

/// Reads the directory of a container that is not empty. Throws `Fault`, and what the container's stream throws.
std::shared_ptr<const ZipArchive> readZip(const std::shared_ptr<Container>& container, const Limits& limits);

}  // namespace foundation::storage::backend::archive::detail::zip
