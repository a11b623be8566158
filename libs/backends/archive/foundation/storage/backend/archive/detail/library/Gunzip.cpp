#include <foundation/storage/backend/archive/detail/library/Gunzip.h>

#include <foundation/storage/backend/archive/detail/Fault.h>

#include <array>
#include <new>
#include <string>

namespace foundation::storage::backend::archive::detail::library {

namespace {

constexpr std::size_t inSize = std::size_t{64} * 1024;
constexpr std::size_t outSize = std::size_t{256} * 1024;
/// The largest window, and no other header than gzip's; see zlib.h, inflateInit2.
constexpr int onlyGzip = MAX_WBITS + 16;
constexpr std::array<unsigned char, 2> magic = {0x1F, 0x8B};

}  // namespace

bool Gunzip::isBegun(Input& input) {
  std::array<char, 2> begin{};
  if (input.size() < begin.size())
    return false;
  input.readAll(0, begin.data(), begin.size());
  return static_cast<unsigned char>(begin[0]) == magic[0] && static_cast<unsigned char>(begin[1]) == magic[1];
}

Gunzip::Gunzip() : in_(inSize), out_(outSize) {
  if (inflateInit2(&stream_, onlyGzip) != Z_OK)
    throw std::bad_alloc();
}

Gunzip::~Gunzip() { inflateEnd(&stream_); }

bool Gunzip::refill(Input& input) {
  const auto got = input.readSome(consumed_, in_.data(), in_.size());
  consumed_ += got;
  stream_.next_in = reinterpret_cast<Bytef*>(in_.data());
  stream_.avail_in = static_cast<uInt>(got);
  return got > 0;
}

/// @return false where nothing follows, or something else
bool Gunzip::beginMember(Input& input) {
  if (stream_.avail_in == 0 && !refill(input))
    return false;
  isInMember_ = *stream_.next_in == magic[0];
  return isInMember_ && inflateReset(&stream_) == Z_OK;
}

std::string_view Gunzip::next(Input& input) {
  stream_.next_out = reinterpret_cast<Bytef*>(out_.data());
  stream_.avail_out = outSize;
  while (!isAtEnd_ && stream_.avail_out == outSize) {
    if (!isInMember_ && !beginMember(input)) {
      isAtEnd_ = true;
      break;
    }
    if (stream_.avail_in == 0 && !refill(input))
      throw damage("the archive ends within its gzip");
    const auto result = inflate(&stream_, Z_NO_FLUSH);
    if (result == Z_MEM_ERROR)
      throw std::bad_alloc();
    if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
      throw damage(std::string("its gzip is damaged: ") + (stream_.msg != nullptr ? stream_.msg : "no such data"));
    isInMember_ = result != Z_STREAM_END;
  }
  const auto count = outSize - stream_.avail_out;
  produced_ += count;
  return {out_.data(), count};
}

}  // namespace foundation::storage::backend::archive::detail::library
