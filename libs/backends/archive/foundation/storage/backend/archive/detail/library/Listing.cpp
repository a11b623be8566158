#include <foundation/storage/backend/archive/detail/library/Listing.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/library/Headers.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <system_error>
#include <utility>

namespace foundation::storage::backend::archive::detail::library {
namespace {

Reading readingOf(ArchiveFormat format) {
  if (format == ArchiveFormat::Tar)
    return Reading::Tar;
  return format == ArchiveFormat::SevenZip ? Reading::SevenZip : Reading::Any;
}

/// The same, once it is known what it is: a tar's names are read in a way of their own.
Reading detect(Reading reading, const std::shared_ptr<Container>& container, const Limits& limits) {
  if (reading != Reading::Any)
    return reading;
  Reader reader(container, reading, 0, limits);
  reader.next(Reader::Unread::PassOver);
  return reader.format() == ARCHIVE_FORMAT_TAR ? Reading::Tar : reading;
}

class Lister {
 public:
  Lister(const std::shared_ptr<Container>& container, Reading reading, const Limits& limits)
      : limits_(limits), reader_(container, reading, 0, limits) {
    listing_.reading = reading;
    listing_.filters = reader_.filters();
  }

  Listing list() {
    while (auto* const header = reader_.next(Reader::Unread::PassOver)) {
      placeContent();
      add(header);
    }
    placeContent();
    listing_.shared = resolve(listing_.entries, links_);
    return std::move(listing_);
  }

 private:
  void add(archive_entry* header) {
    auto& entries = listing_.entries;
    if (entries.size() == limits_.entries)
      throw Fault(provider::ErrorCode::FileTooLarge, "it has more than the " + std::to_string(limits_.entries) +
                                                         " entries that the option max-entries allows");
    entries.push_back(entryIn(header));
    if (const auto* target = archive_entry_hardlink(header); target != nullptr) {
      const auto hasContent = entries.back().size.value_or(0) > 0;
      links_.push_back({entries.size() - 1, target, hasContent, reader_.format() == ARCHIVE_FORMAT_CPIO});
    }
    isSparse_ = archive_entry_sparse_count(header) > 0;
    if (hasPlaces())
      listing_.places.push_back({reader_.headerPosition(), {}});
  }

  bool hasPlaces() const { return reader_.format() == ARCHIVE_FORMAT_TAR && !reader_.isFiltered(); }

  /// Now that the next header is found: a tar's content is filled up to whole blocks, and ends there. Before it may be
  /// more than one header.
  void placeContent() {
    if (!hasPlaces() || isSparse_ || listing_.places.empty() || listing_.entries.back().kind != EntryKind::File)
      return;
    constexpr std::uint64_t block = 512;
    const auto size = listing_.entries.back().size.value_or(0);
    const auto space = size + (block - size % block) % block;
    const auto header = listing_.places.back().header;
    const auto end = reader_.headerPosition();
    if (space <= end - header - block && isTold(size, end - space - block))
      listing_.places.back().content = end - space;
  }

  /// Whether the last header of an entry, which says how much there is, says that. Those before it can say that the
  /// entry is larger, without telling of its holes.
  /// @param header  a position in the container
  bool isTold(std::uint64_t size, std::uint64_t header) {
    constexpr std::uint64_t leastWithoutRoom = std::uint64_t{1} << 33;  // in eleven octal digits
    if (size >= leastWithoutRoom)
      return true;
    constexpr std::uint64_t sizeField = 124;
    std::array<char, 12> digits{};
    for (std::size_t got = 0; got < digits.size();) {
      const auto more = reader_.source().readSome(header + sizeField + got, digits.data() + got, digits.size() - got);
      if (more == 0)
        return false;
      got += more;
    }
    const auto* const begin = std::find_if(digits.begin(), digits.end(), [](char digit) { return digit != ' '; });
    std::uint64_t told = 0;
    return std::from_chars(begin, digits.end(), told, 8).ec == std::errc() && told == size;
  }

  const Limits limits_;
  Reader reader_;
  Listing listing_;
  std::vector<HardLink> links_;
  bool isSparse_ = false;  ///< the last entry
};

}  // namespace

Listing list(ArchiveFormat format, const std::shared_ptr<Container>& container, const Limits& limits) {
  return Lister(container, detect(readingOf(format), container, limits), limits).list();
}

}  // namespace foundation::storage::backend::archive::detail::library
