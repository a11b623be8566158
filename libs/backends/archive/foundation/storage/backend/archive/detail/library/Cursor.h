#pragma once

#include <foundation/storage/backend/archive/detail/library/Reader.h>

#include <string_view>

namespace foundation::storage::backend::archive::detail::library {

/// A reader that knows where in an archive it is. For one thread at a time.
class Cursor {
 public:
  /// @param next  the number of the entry that the reader comes to first
  Cursor(std::size_t next, const std::shared_ptr<Container>& container, Reading reading, std::uint64_t begin,
         const Limits& limits)
      : next_(next), reader_(container, reading, begin, limits) {}

  /// The first entry that it can still go to.
  std::size_t next() const { return next_; }

  /// Goes to an entry's header. Throws `Fault`, also where the entry does not have that name, and what the stream
  /// throws.
  /// @param number  at least `next()`
  /// @return until the reader goes on
  archive_entry* goTo(std::size_t number, std::string_view name);

  Reader& reader() { return reader_; }

 private:
  std::size_t next_;
  Reader reader_;
};

}  // namespace foundation::storage::backend::archive::detail::library
