#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace foundation::storage::backend::support {

/// A listing of a whole subtree whose entries are all there from the beginning. Paths are only made of the names when
/// they are asked for: all at once they could take far more memory than the tree.
class FOUNDATION_EXPORT EntryTree final : public provider::IFolderEntryIterator {
 public:
  /// In place of an index: the listed folder itself.
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  /// One entry of the subtree.
  struct Item {
    provider::FolderEntry entry;  ///< with its name alone
    std::size_t folder = none;    ///< the index of the entry that holds it; none in the listed folder itself
  };
  /// In the order in which they are listed.
  using Items = std::vector<Item>;

  /// @param list  gives the entries, each behind the folder that holds it; called at once, and again by `reset()`. What
  ///              it throws, they throw.
  explicit EntryTree(std::function<Items()> list);
  ~EntryTree() override;

  provider::FolderEntry current() const override;
  bool hasNext() const override { return next_ < items_.size(); }
  void next() override;
  void reset() override;

 private:
  std::u16string pathOf(std::size_t index) const;

  std::function<Items()> list_;
  Items items_;
  std::size_t next_ = 0;  ///< beyond the number of entries when the walk has passed the last one
};

}  // namespace foundation::storage::backend::support
