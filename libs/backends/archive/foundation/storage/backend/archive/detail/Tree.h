#pragma once

#include <foundation/storage/backend/archive/detail/EntryName.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/Node.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::backend::archive::detail {

/// What becomes of a link at the end of a path.
enum class AtEnd { FollowLink, KeepLink };

/// The entries of an archive by their names. `ArchiveProviderFactory` says which entries are shown, and where links
/// lead to. Has no lock of its own.
class Tree {
 public:
  /// @param time  of what the archive tells no time of
  /// Throws what the archive's readers throw, but for what is wrong with a single link; and `Fault` where the folders
  /// that names only imply make more entries than may be.
  Tree(const StoredArchive& archive, const boost::posix_time::ptime& time, const Limits& limits);

  Node& root() { return root_; }
  const Node& root() const { return root_; }

  /// The numbers of the entries that are hidden, in ascending order: they stay in the archive when it is written anew,
  /// as long as they are hidden.
  /// Those that later ones of the same name replace are not among them.
  const std::vector<std::size_t>& hidden() const { return hidden_; }
  void setHidden(std::vector<std::size_t> hidden) { hidden_ = std::move(hidden); }
  /// Whether an entry would be hidden by what the tree shows now, if it were read last.
  /// @param names  at least one
  bool hides(const Names& names, EntryKind kind) const;

  enum class Obstacle {
    None,
    Missing,   ///< a folder on the way is not there
    File,      ///< something on the way is no folder
    Outside,   ///< a link leads out of the archive
    LinkLoop,  ///< more links follow each other than anybody needs
  };
  /// Where a path leads to.
  struct Found {
    Node* node = nullptr;
    Node* folder = nullptr;  ///< that holds it, or could; null for the root, and for what a link finds by ".."
    std::u16string name{};   ///< in that folder
    Obstacle obstacle = Obstacle::None;
    std::vector<Node*> way{};  ///< the folders from the root on that it lies in, whatever links lead there; it, too
  };
  Found find(const Names& names, AtEnd atEnd) const;

 private:
  void add(const StoredArchive& archive, std::size_t number);
  Node* makeFolders(const Names& names, std::size_t number);
  std::unique_ptr<Node>& makeNode(Node& folder, const std::u16string& name, EntryKind kind, std::size_t number);
  void fill(Node& node, const StoredArchive& archive, std::size_t number) const;

  const boost::posix_time::ptime time_;
  const Limits limits_;
  std::uint64_t nodes_ = 0;  ///< that were made of the archive
  Node root_{EntryKind::Folder};
  std::vector<std::size_t> hidden_;
};

}  // namespace foundation::storage::backend::archive::detail
