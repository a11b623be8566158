#include <foundation/storage/backend/archive/detail/zip/Deflater.h>

#include <new>

namespace foundation::storage::backend::archive::detail::zip {

Deflater::Deflater() {
  constexpr int withoutHeader = -MAX_WBITS;
  constexpr int usualMemory = 8;
  if (deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, withoutHeader, usualMemory, Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
}

Deflater::~Deflater() { deflateEnd(&stream_); }

void Deflater::addStored(std::string_view bytes, std::string& out) {
  setLevel(Z_NO_COMPRESSION, out);
  add(bytes, out);
  setLevel(Z_DEFAULT_COMPRESSION, out);
}

void Deflater::finish(std::string& out) {
  run({}, Z_FINISH, out);
  deflateReset(&stream_);
}

/// Compresses first what was added before.
void Deflater::setLevel(int level, std::string& out) {
  constexpr std::size_t step = 64 * 1024;
  int result = Z_BUF_ERROR;
  stream_.next_in = nullptr;
  stream_.avail_in = 0;
  while (result == Z_BUF_ERROR) {
    const auto size = out.size();
    out.resize(size + step);
    stream_.next_out = reinterpret_cast<Bytef*>(out.data() + size);
    stream_.avail_out = step;
    result = deflateParams(&stream_, level, Z_DEFAULT_STRATEGY);
    out.resize(size + step - stream_.avail_out);
  }
}

void Deflater::run(std::string_view bytes, int flush, std::string& out) {
  constexpr std::size_t step = 64 * 1024;
  // zlib changes nothing there; its interface just lacks the const.
  stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream_.avail_in = static_cast<uInt>(bytes.size());
  do {
    const auto size = out.size();
    out.resize(size + step);
    stream_.next_out = reinterpret_cast<Bytef*>(out.data() + size);
    stream_.avail_out = step;
    deflate(&stream_, flush);
    out.resize(size + step - stream_.avail_out);
  } while (stream_.avail_out == 0);
}

}  // namespace foundation::storage::backend::archive::detail::zip
