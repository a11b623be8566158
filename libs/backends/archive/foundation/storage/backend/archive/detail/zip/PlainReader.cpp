#include <foundation/storage/backend/archive/detail/zip/PlainReader.h>

#include <foundation/storage/backend/archive/detail/Fault.h>

#include <zlib.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::archive::detail::zip {

PlainReader::PlainReader(std::shared_ptr<const StoredArchive> archive, Budget& budget, Input input,
                         const Content& content)
    : archive_(std::move(archive)), budget_(budget), input_(std::move(input)), content_(content) {
  if (content_.size != content_.storedSize)
    throw damage("the entry is stored without compression, but told to have two sizes");
}

std::size_t PlainReader::read(char* buffer, std::size_t count) {
  const auto left = content_.size - position_;
  if (left == 0) {
    if (checked_ == content_.size && crc_ != content_.crc)
      throw damage("the entry's checksum is wrong");
    return 0;
  }
  // What zlib counts its input in.
  constexpr std::uint64_t most = 1U << 30;
  const auto wanted = std::min({static_cast<std::uint64_t>(count), left, most});
  const auto got = input_.readSome(content_.position + position_, buffer, wanted);
  if (got == 0)
    throw damage("the archive ends within the entry");
  if (checked_ == position_)
    addToChecksum(buffer, got);
  position_ += got;
  given_ = std::min(given_ + got, content_.size);
  budget_.note(content_.number, given_);
  return got;
}

void PlainReader::addToChecksum(const char* bytes, std::size_t count) {
  crc_ = static_cast<std::uint32_t>(crc32(crc_, reinterpret_cast<const Bytef*>(bytes), static_cast<uInt>(count)));
  checked_ += count;
}

bool PlainReader::seek(std::uint64_t position) {
  position_ = std::min(position, content_.size);
  return true;
}

}  // namespace foundation::storage::backend::archive::detail::zip
