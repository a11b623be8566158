#include <foundation/storage/backend/archive/detail/library/Source.h>

#include <foundation/storage/backend/archive/detail/Budget.h>
#include <foundation/storage/backend/archive/detail/Fault.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace foundation::storage::backend::archive::detail::library {

Source::Source(const std::shared_ptr<Container>& container, std::uint64_t begin, Compression compression,
               const Limits& limits)
    : limits_(limits), input_(container->open()), begin_(begin), position_(begin) {
  if (compression == Compression::MayBeGzip && Gunzip::isBegun(input_))
    gunzip_.emplace();
}

void Source::attachTo(::archive* reader) {
  archive_read_set_read_callback(reader, &Source::onRead);
  archive_read_set_callback_data(reader, this);
  if (gunzip_)
    return;  // which can only be read on
  archive_read_set_skip_callback(reader, &Source::onSkip);
  archive_read_set_seek_callback(reader, &Source::onSeek);
}

void Source::rethrow() const {
  if (failure_)
    std::rethrow_exception(failure_);
}

template <class Operation>
la_int64_t Source::guard(::archive* reader, const Operation& operation) noexcept {
  try {
    if (!failure_)
      return static_cast<la_int64_t>(operation());
  } catch (...) {
    failure_ = std::current_exception();
  }
  archive_set_error(reader, EIO, "the archive's bytes cannot be read");
  return ARCHIVE_FATAL;
}

la_ssize_t Source::onRead(::archive* reader, void* self, const void** block) {
  auto& source = *static_cast<Source*>(self);
  return static_cast<la_ssize_t>(source.guard(reader, [&] { return source.read(reader, block); }));
}

la_int64_t Source::onSkip(::archive* reader, void* self, la_int64_t count) {
  auto& source = *static_cast<Source*>(self);
  const auto most = static_cast<std::uint64_t>(std::max<la_int64_t>(0, count));
  const auto skipped = source.guard(reader, [&] { return source.skip(most); });
  // libarchive would take a failure for a step back, and try for ever. Told of nothing it reads, which fails, too.
  return std::max<la_int64_t>(0, skipped);
}

la_int64_t Source::onSeek(::archive* reader, void* self, la_int64_t offset, int origin) {
  auto& source = *static_cast<Source*>(self);
  return source.guard(reader, [&] { return source.seek(offset, origin); });
}

std::size_t Source::readGzip(const void** block) {
  const auto bytes = gunzip_->next(input_);
  Budget::requireRatio(limits_, gunzip_->produced(), size());
  *block = bytes.data();
  return bytes.size();
}

std::size_t Source::read(::archive* reader, const void** block) {
  if (gunzip_)
    return readGzip(block);
  // What is decoded within one call of libarchive, however much, passes by here.
  if (archive_filter_count(reader) > 1)
    Budget::requireRatio(limits_, static_cast<std::uint64_t>(std::max<la_int64_t>(0, archive_filter_bytes(reader, 0))),
                         size());
  block_.resize(blockSize_);
  blockFill_ = 0;
  const auto got = input_.readSome(position_, block_.data(), block_.size());
  blockPosition_ = position_;
  blockFill_ = got;
  blockSize_ = std::min(2 * blockSize_, largestBlock);
  position_ += got;
  consumed_ += got;
  *block = block_.data();
  return got;
}

std::size_t Source::readSome(std::uint64_t position, char* buffer, std::size_t count) {
  if (position < blockPosition_ || position >= blockPosition_ + blockFill_)
    return input_.readSome(position, buffer, count);
  const auto offset = static_cast<std::size_t>(position - blockPosition_);
  const auto got = std::min(count, blockFill_ - offset);
  std::copy_n(block_.data() + offset, got, buffer);
  return got;
}

std::uint64_t Source::skip(std::uint64_t count) {
  const auto end = input_.size();
  const auto skipped = std::min(count, end - std::min(position_, end));
  if (skipped > 0)
    blockSize_ = firstBlock;
  position_ += skipped;
  consumed_ += skipped;
  return skipped;
}

std::uint64_t Source::seek(std::int64_t offset, int origin) {
  auto base = origin == SEEK_CUR ? position_ : begin_;
  if (origin == SEEK_END)
    base = input_.size();
  const auto back = offset < 0 ? ~static_cast<std::uint64_t>(offset) + 1 : 0;
  if (back > base - begin_)
    throw damage("it names a place before its beginning");
  position_ = offset < 0 ? base - back : base + static_cast<std::uint64_t>(offset);
  blockSize_ = firstBlock;
  return position_ - begin_;
}

}  // namespace foundation::storage::backend::archive::detail::library
