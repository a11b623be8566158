#pragma once

#include <foundation/storage/events/EntryType.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace foundation::storage::provider::detail {

/// What a poller remembers of a folder. It is compared with a new listing entry by entry, and becomes what
/// was listed; where that ends early, by an exception, it forgets what was compared.
///
/// A watched folder may hold very many entries, and is mostly listed in the same order again: an entry is
/// sought first where the listing stands, and costs its name and 16 bytes.
class FolderSnapshot {
 public:
  using Time = boost::posix_time::ptime;

  struct Entry {
    std::u16string name;  ///< relative to the folder
    Time lastModified;
    std::uint32_t order;  ///< in the listing under way, counted from 1; 0 until it is seen there
    events::EntryType type;

    bool isSeen() const { return order != 0; }
  };

  /// The folder's own last-modified time; none where nobody wants it, or a failed comparison took it.
  std::optional<Time> own;

  /// Begins a comparison.
  void begin();
  /// The entry known under that name, seen already or not; null where there is none. Valid until `finish`.
  Entry* find(std::u16string_view name);
  /// The entry is still there.
  void see(Entry& entry, events::EntryType type, const Time& lastModified);
  /// An entry that was not known. Of several with one name the first counts.
  void add(const std::u16string& name, events::EntryType type, const Time& lastModified);
  /// What was not seen.
  std::vector<const Entry*> missing() const;
  /// Makes the snapshot what was listed.
  void finish();
  /// Ends a comparison that failed: what it has seen is forgotten, what it added was never there.
  void abandon() noexcept;

 private:
  void reset() noexcept;
  void sortBySight();

  std::vector<Entry> entries_;
  // During a comparison:
  std::size_t next_ = 0;  ///< where the listing is expected to go on
  std::uint32_t seen_ = 0;
  bool isInOrder_ = true;
  std::unordered_map<std::u16string_view, std::size_t> index_;  ///< built when the order fails
  std::deque<Entry> added_;                                     ///< its entries stay where they are
  std::unordered_set<std::u16string_view> addedNames_;
};

}  // namespace foundation::storage::provider::detail
