#pragma once

#include <foundation/storage/backend/archive/ArchiveFormat.h>
#include <foundation/storage/backend/archive/detail/ArchiveWriter.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>
#include <foundation/storage/backend/archive/detail/Tree.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace foundation::storage::backend::archive::detail {

/// One writing of an archive: what its tree shows, in the order of the old archive, then what is new, and last what
/// others hide. The tree must not change meanwhile; contents may, and then stay staged.
class Commit {
 public:
  /// @param stored  the old archive; null where there is none
  Commit(Tree& tree, std::shared_ptr<const StoredArchive> stored);

  /// Writes all of it in one transaction of the store that holds the container. Throws what the store and the old
  /// archive throw; the file is as it was then.
  /// @param container  a new one, for what is written
  void write(ArchiveFormat format, const std::shared_ptr<Container>& container, const Limits& limits);

  /// Makes the tree one of what was written.
  /// @return whether content was written to meanwhile, or may be, so that it still waits
  bool adopt();

  /// What was written; null as long as that is not all.
  const std::shared_ptr<const StoredArchive>& written() const { return written_; }
  /// How large that is, in bytes.
  std::uint64_t size() const { return size_; }

 private:
  struct Item {
    Node* node;          ///< null for what is hidden
    std::size_t number;  ///< of the old entry
    std::string path;
    std::uint64_t revision = 0;  ///< of the staged content that was written
  };
  static constexpr std::size_t isNew = static_cast<std::size_t>(-1);

  void plan();
  std::vector<Item> planHidden();
  std::string storedName(const Item& item) const;
  void putNamed(Item& item, ArchiveWriter& writer) const;
  void put(Item& item, ArchiveWriter& writer) const;
  static void putFile(Item& item, ArchiveWriter& writer);
  bool adopt(const Item& item, std::size_t number) const;

  Tree& tree_;
  std::shared_ptr<const StoredArchive> stored_;
  std::shared_ptr<const StoredArchive> written_;
  std::uint64_t size_ = 0;
  std::vector<Item> items_;
  std::uint64_t nodes_ = 0;  ///< of the tree, folders that names only imply included
};

}  // namespace foundation::storage::backend::archive::detail
