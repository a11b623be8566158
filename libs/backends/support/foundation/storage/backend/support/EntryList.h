#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/IFolderEntryIterator.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace foundation::storage::backend::support {

/// A listing of entries that are all there from the beginning.
class FOUNDATION_EXPORT EntryList final : public provider::IFolderEntryIterator {
 public:
  /// In the order in which they are listed.
  using Entries = std::vector<provider::FolderEntry>;

  /// @param list  gives the entries; called at once, and again by `reset()`. What it throws, they throw.
  explicit EntryList(std::function<Entries()> list);
  ~EntryList() override;

  provider::FolderEntry current() const override;
  bool hasNext() const override { return next_ < entries_.size(); }
  void next() override;
  void reset() override;

 private:
  std::function<Entries()> list_;
  Entries entries_;
  std::size_t next_ = 0;  ///< beyond the number of entries when the walk has passed the last one
};

}  // namespace foundation::storage::backend::support
