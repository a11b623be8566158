#include <foundation/storage/backend/archive/detail/library/Contents.h>

#include <foundation/storage/backend/archive/detail/Fault.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::archive::detail::library {
namespace {

/// Reads with a cursor that is lost where that fails.
template <class Read>
std::size_t readWith(std::unique_ptr<Cursor>& cursor, const Read& read) {
  if (!cursor)
    throw damage("its content could not be read before");
  auto used = std::move(cursor);
  const std::size_t got = read(used->reader());
  cursor = std::move(used);
  return got;
}

}  // namespace

DecodedContent::DecodedContent(std::shared_ptr<const LibraryArchive> archive, std::size_t number,
                               std::unique_ptr<Cursor> cursor)
    : archive_(std::move(archive)), number_(number), cursor_(std::move(cursor)) {}

DecodedContent::~DecodedContent() {
  if (cursor_)
    archive_->giveBack(std::move(cursor_));
}

std::size_t DecodedContent::read(char* buffer, std::size_t count) {
  const auto got = readWith(cursor_, [&](Reader& reader) { return reader.read(buffer, count); });
  given_ += got;
  archive_->budget().note(number_, given_);
  return got;
}

PlainContent::PlainContent(std::shared_ptr<const LibraryArchive> archive, std::size_t number,
                           std::unique_ptr<Cursor> cursor)
    : archive_(std::move(archive)),
      number_(number),
      begin_(*archive_->listing().places[number].content),
      size_(archive_->entries()[number].size.value_or(0)),
      cursor_(std::move(cursor)) {}

PlainContent::~PlainContent() {
  if (cursor_)
    archive_->giveBack(std::move(cursor_));
}

std::size_t PlainContent::read(char* buffer, std::size_t count) {
  const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - position_));
  if (most == 0)
    return 0;
  const auto got =
      readWith(cursor_, [&](Reader& reader) { return reader.source().readSome(begin_ + position_, buffer, most); });
  if (got == 0)
    throw damage("the archive ends too early");
  position_ += got;
  given_ = std::min(given_ + got, size_);
  archive_->budget().note(number_, given_);
  return got;
}

bool PlainContent::seek(std::uint64_t position) {
  if (position > size_)
    return false;
  position_ = position;
  return true;
}

}  // namespace foundation::storage::backend::archive::detail::library
