#include <foundation/storage/backend/archive/detail/Output.h>

#include <algorithm>

namespace foundation::storage::backend::archive::detail {

void Output::write(std::string_view bytes) {
  position_ += bytes.size();
  if (buffer_.size() + bytes.size() > bufferSize)
    flush();
  if (bytes.size() >= bufferSize)
    writeThrough(bytes);
  else
    buffer_ += bytes;
}

void Output::flush() {
  writeThrough(buffer_);
  buffer_.clear();
}

void Output::writeThrough(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = stream_.write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace foundation::storage::backend::archive::detail
