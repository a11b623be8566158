#include <foundation/storage/backend/archive/detail/library/Reader.h>

#include <foundation/storage/backend/archive/detail/Budget.h>
#include <foundation/storage/backend/archive/detail/Fault.h>

#include <algorithm>
#include <new>
#include <string>

namespace foundation::storage::backend::archive::detail::library {
namespace {

using Enable = int (*)(::archive*);

/// Those compressions that libarchive does itself; a gzip only within another compression. For others it answers with a
/// warning, and would start a program.
std::vector<Enable> ownFilters() {
  std::vector<Enable> own;
  for (const auto enable :
       {&archive_read_support_filter_gzip, &archive_read_support_filter_bzip2, &archive_read_support_filter_compress,
        &archive_read_support_filter_xz, &archive_read_support_filter_lzma, &archive_read_support_filter_zstd,
        &archive_read_support_filter_lz4}) {
    const ReaderHandle trial(archive_read_new());
    if (trial && enable(trial.get()) == ARCHIVE_OK)
      own.push_back(enable);
  }
  return own;
}

/// Not among them: mtree, which reads files from the disk, and raw and warc, which are no archives of files.
constexpr Enable anyFormat[] = {&archive_read_support_format_tar, &archive_read_support_format_7zip,
                                &archive_read_support_format_cab, &archive_read_support_format_cpio,
                                &archive_read_support_format_lha, &archive_read_support_format_iso9660,
                                &archive_read_support_format_rar, &archive_read_support_format_rar5,
                                &archive_read_support_format_xar, &archive_read_support_format_ar};

void enableFormats(::archive* reader, Reading reading) {
  if (reading == Reading::Tar)
    archive_read_support_format_tar(reader);
  else if (reading == Reading::PlainTar)
    archive_read_set_format(reader, ARCHIVE_FORMAT_TAR);
  else if (reading == Reading::SevenZip)
    archive_read_support_format_7zip(reader);
  else
    for (const auto enable : anyFormat)
      enable(reader);
}

bool mayBeCompressed(Reading reading) { return reading == Reading::Tar || reading == Reading::Any; }

void enableFilters(::archive* reader, Reading reading) {
  static const auto filters = ownFilters();
  if (mayBeCompressed(reading))
    for (const auto enable : filters)
      enable(reader);
}

ReaderHandle makeHandle(Reading reading) {
  ReaderHandle handle(archive_read_new());
  if (!handle)
    throw std::bad_alloc();
  enableFormats(handle.get(), reading);
  enableFilters(handle.get(), reading);
  return handle;
}

Source::Compression compressionIn(Reading reading) {
  return mayBeCompressed(reading) ? Source::Compression::MayBeGzip : Source::Compression::None;
}

/// A tar's names are bytes, or said to be UTF-8, and are to be the same when they are written again.
posix::NameForm namesIn(Reading reading) {
  return reading == Reading::Tar || reading == Reading::PlainTar ? posix::NameForm::Bytes : posix::NameForm::Utf8;
}

}  // namespace

Reader::Reader(const std::shared_ptr<Container>& container, Reading reading, std::uint64_t begin, const Limits& limits)
    : limits_(limits),
      begin_(begin),
      names_(namesIn(reading)),
      source_(container, begin, compressionIn(reading), limits),
      handle_(makeHandle(reading)) {
  source_.attachTo(handle_.get());
  const posix::NameLocale locale(names_);
  const auto result = archive_read_open1(handle_.get());
  source_.rethrow();
  if (result < ARCHIVE_WARN)
    fail();
}

archive_entry* Reader::next(Unread unread) {
  if (isInEntry_)
    passBy(unread);
  const posix::NameLocale locale(names_);
  archive_entry* header = nullptr;
  const auto result = archive_read_next_header(handle_.get(), &header);
  source_.rethrow();
  if (result < ARCHIVE_WARN || result == ARCHIVE_RETRY)
    fail();
  requireRatio();
  isInEntry_ = result != ARCHIVE_EOF;
  if (!isInEntry_)
    return nullptr;
  // Only of a tar's files is it known that what they lack at their end is a hole.
  size_ = format() == ARCHIVE_FORMAT_TAR
              ? static_cast<std::uint64_t>(std::max<la_int64_t>(0, archive_entry_size(header)))
              : 0;
  position_ = 0;
  block_ = {};
  isAtEnd_ = false;
  return header;
}

std::uint64_t Reader::headerPosition() const {
  return begin_ + static_cast<std::uint64_t>(archive_read_header_position(handle_.get()));
}

std::vector<int> Reader::filters() const {
  std::vector<int> codes;
  for (int filter = 0; filter + 1 < archive_filter_count(handle_.get()); ++filter)
    codes.push_back(archive_filter_code(handle_.get(), filter));
  if (source_.isGzip())
    codes.push_back(ARCHIVE_FILTER_GZIP);
  return codes;
}

/// Whether entries may be compressed together.
bool Reader::isSolid() const {
  return format() == ARCHIVE_FORMAT_7ZIP || format() == ARCHIVE_FORMAT_CAB || format() == ARCHIVE_FORMAT_RAR ||
         format() == ARCHIVE_FORMAT_RAR_V5;
}

void Reader::passBy(Unread unread) {
  if (isFiltered())
    return drain();
  if (unread == Unread::PassOver || !isSolid())
    return;
  try {
    drain();
  } catch (const Fault& fault) {
    // What is wrong with one entry need not be wrong with the next.
    if (fault.code() == provider::ErrorCode::FileTooLarge)
      throw;
  }
}

/// libarchive would do this by itself, in one go (and, in a 7z, lose its way after some MiB): without looking at how
/// much comes out of how little.
void Reader::drain() {
  Block block;
  while (readBlock(block)) {
  }
}

bool Reader::readBlock(Block& block) {
  if (isAtEnd_)
    return false;
  const void* bytes = nullptr;
  std::size_t count = 0;
  la_int64_t position = 0;
  const auto result = archive_read_data_block(handle_.get(), &bytes, &count, &position);
  source_.rethrow();
  if (result < ARCHIVE_OK)
    fail();
  isAtEnd_ = result == ARCHIVE_EOF;
  if (isAtEnd_)
    return false;
  produced_ += count;
  requireRatio();
  block = {{static_cast<const char*>(bytes), count}, static_cast<std::uint64_t>(position)};
  return true;
}

std::size_t Reader::read(char* buffer, std::size_t count) {
  while (block_.bytes.empty() && readBlock(block_)) {
    if (block_.position < position_)
      throw damage("an entry's content overlaps itself");
  }
  const auto end = block_.bytes.empty() ? size_ : block_.position;
  if (position_ >= end)
    return readPresent(buffer, count);
  const auto zeros = static_cast<std::size_t>(std::min<std::uint64_t>(count, end - position_));
  std::fill_n(buffer, zeros, '\0');
  position_ += zeros;
  produced_ += zeros;
  requireRatio();
  return zeros;
}

std::size_t Reader::readPresent(char* buffer, std::size_t count) {
  const auto got = block_.bytes.copy(buffer, count);
  block_.bytes.remove_prefix(got);
  block_.position += got;
  position_ += got;
  return got;
}

/// What is compressed as a whole is judged as a whole: a part of an honest one may be small beyond all measure.
void Reader::requireRatio() {
  if (!isFiltered())
    return Budget::requireRatio(limits_, produced_, source_.consumed());
  const auto decoded = static_cast<std::uint64_t>(archive_filter_bytes(handle_.get(), 0));
  Budget::requireRatio(limits_, std::max(produced_, decoded), source_.size());
}

void Reader::fail() const {
  const auto* const told = archive_error_string(handle_.get());
  const std::string reason = told != nullptr ? told : "the archive cannot be read";
  const auto says = [&](const char* word) { return reason.find(word) != std::string::npos; };
  const bool isEncrypted = says("ncrypt") || says("assphrase") || says("Crypto codec");
  throw Fault(isEncrypted ? provider::ErrorCode::UnsupportedOperation : provider::ErrorCode::IOError, reason);
}

}  // namespace foundation::storage::backend::archive::detail::library
