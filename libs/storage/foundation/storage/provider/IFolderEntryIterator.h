#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/FolderEntry.h>

namespace foundation::storage::provider {

/// A listing under way. A fresh one stands before the first entry:
///
///     for (const auto entries = provider->listAll(folder, u""); entries->hasNext();) {
///       entries->next();
///       use(entries->current());
///     }
///
/// The store is read as the walk goes on, so any operation but `current()` may throw `Exception` with
/// the folder's location. Entries that come or go meanwhile may or may not be seen. For one thread at a
/// time.
class FOUNDATION_EXPORT IFolderEntryIterator {
 public:
  IFolderEntryIterator() = default;
  IFolderEntryIterator(const IFolderEntryIterator&) = default;
  IFolderEntryIterator& operator=(const IFolderEntryIterator&) = default;

  /// A copy of the entry under the cursor. Throws `std::logic_error` where there is none: before `next()`,
  /// after the end, after `reset()`.
  virtual FolderEntry current() const = 0;
  /// Whether another entry follows.
  virtual bool hasNext() const = 0;
  /// Moves to the following entry, or beyond the last one.
  virtual void next() = 0;
  /// Back to before the first entry; the folder is listed anew.
  virtual void reset() = 0;
  virtual ~IFolderEntryIterator();
};

}  // namespace foundation::storage::provider
