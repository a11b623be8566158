#include <foundation/storage/backend/archive/detail/zip/DecodedReader.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/zip/ExtraFields.h>
#include <foundation/storage/backend/archive/detail/zip/Records.h>

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <new>
#include <utility>

namespace foundation::storage::backend::archive::detail::zip {

namespace {

/// What is read from the container at once.
constexpr std::size_t leastBuffer = 4 * 1024;
constexpr std::size_t mostBuffer = 128 * 1024;

/// The header of an entry named "a" whose sizes are known before its content.
std::string localHeader(const Content& content) {
  std::string sizes;
  appendNumber(sizes, content.size);
  appendNumber(sizes, content.storedSize);
  const auto zip64 = extraField(extraZip64, sizes);
  std::string header;
  appendNumber(header, localHeaderSignature);
  appendNumber(header, versionZip64);
  appendNumber(header, static_cast<std::uint16_t>(content.flags & ~flagDescriptor));
  appendNumber(header, content.method);
  appendNumber(header, std::uint32_t{0});  // the time
  appendNumber(header, content.crc);
  appendNumber(header, inZip64);
  appendNumber(header, inZip64);
  appendNumber(header, std::uint16_t{1});
  appendNumber(header, static_cast<std::uint16_t>(zip64.size()));
  return header + "a" + zip64;
}

}  // namespace

void DecodedReader::Free::operator()(::archive* decoder) const { archive_read_free(decoder); }

DecodedReader::DecodedReader(std::shared_ptr<const StoredArchive> archive, Budget& budget, const Limits& limits,
                             Input input, const Content& content)
    : archive_(std::move(archive)), budget_(budget), limits_(limits), input_(std::move(input)), content_(content) {
  begin();
}

void DecodedReader::begin() {
  isHeaderGiven_ = false;
  consumed_ = produced_ = 0;
  decoder_.reset(archive_read_new());
  if (!decoder_)
    throw std::bad_alloc();
  requireWell(archive_read_support_format_zip_streamable(decoder_.get()));
  requireWell(archive_read_open(decoder_.get(), this, nullptr, &DecodedReader::giveBytes, nullptr));
  archive_entry* entry = nullptr;
  requireWell(archive_read_next_header(decoder_.get(), &entry));
}

void DecodedReader::requireWell(long long result) {
  if (failure_)
    std::rethrow_exception(std::exchange(failure_, nullptr));
  if (result >= ARCHIVE_OK)
    return;
  const char* reason = archive_error_string(decoder_.get());
  const auto text = std::string("the entry cannot be decoded: ") + (reason != nullptr ? reason : "it is damaged");
  // libarchive has no code of its own for this.
  if (text.find("nsupported ZIP compression") != text.npos)
    throw Fault(provider::ErrorCode::UnsupportedOperation, text);
  throw damage(text);
}

long DecodedReader::giveBytes(::archive* /*decoder*/, void* self, const void** bytes) noexcept {
  auto& reader = *static_cast<DecodedReader*>(self);
  try {
    return static_cast<long>(reader.nextBytes(bytes));
  } catch (...) {
    reader.failure_ = std::current_exception();
    return ARCHIVE_FATAL;
  }
}

std::size_t DecodedReader::nextBytes(const void** bytes) {
  if (!std::exchange(isHeaderGiven_, true)) {
    buffer_ = localHeader(content_);
    *bytes = buffer_.data();
    return buffer_.size();
  }
  const auto left = content_.storedSize - consumed_;
  if (left == 0)
    return 0;
  // Small entries and the beginnings of large ones cost little.
  const auto step = std::clamp<std::uint64_t>(consumed_, leastBuffer, mostBuffer);
  buffer_.resize(std::min(left, step));
  const auto got = input_.readSome(content_.position + consumed_, buffer_.data(), buffer_.size());
  if (got == 0)
    throw damage("the archive ends within the entry");
  consumed_ += got;
  *bytes = buffer_.data();
  return got;
}

std::size_t DecodedReader::read(char* buffer, std::size_t count) {
  const auto got = archive_read_data(decoder_.get(), buffer, count);
  requireWell(got);
  const auto bytes = static_cast<std::size_t>(got);
  produced_ += bytes;
  if (produced_ > content_.size || (bytes == 0 && produced_ != content_.size))
    throw damage("the entry's content has another size than the zip's directory tells");
  Budget::requireRatio(limits_, produced_, consumed_);
  budget_.note(content_.number, produced_);
  return bytes;
}

bool DecodedReader::seek(std::uint64_t position) {
  if (position != 0)
    return false;
  begin();
  return true;
}

}  // namespace foundation::storage::backend::archive::detail::zip
