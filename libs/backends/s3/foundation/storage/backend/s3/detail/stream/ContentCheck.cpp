#include <foundation/storage/backend/s3/detail/stream/ContentCheck.h>

#include <foundation/storage/backend/s3/detail/stream/Limits.h>

#include <algorithm>
#include <charconv>

namespace foundation::storage::backend::s3::detail::stream {

namespace {

/// The size of the first part, where the object says it and has as many parts as that makes; 0 otherwise. (Others may
/// have copied what an object says of itself, but not its parts.)
std::uint64_t partSizeOf(const client::ObjectInfo& object) {
  const auto* text = wire::findHeader(object.kept, partSizeHeader);
  std::uint64_t partSize = 0;
  if (!text || object.isETagOpaque ||
      std::from_chars(text->data(), text->data() + text->size(), partSize).ec != std::errc() || partSize == 0)
    return 0;
  int count = 0;
  for (std::uint64_t end = 0; end < object.size && count < mostParts; ++count)
    end += sizeOfPart(count + 1, partSize);
  const auto dash = object.eTag.rfind('-');
  return dash != std::string::npos && object.eTag.substr(dash + 1) == std::to_string(count) ? partSize : 0;
}

}  // namespace

ContentCheck::ContentCheck(const client::ObjectInfo& object) : size_(object.size) {
  if (object.md5) {
    expected_ = wire::hex(wire::bytesOf(*object.md5));
    partEnd_ = size_;
  } else if (const auto partSize = partSizeOf(object); partSize != 0) {
    expected_ = object.eTag;
    partSize_ = partSize;
    partEnd_ = std::min(partSize, size_);
  }
}

bool ContentCheck::accepts(std::uint64_t offset, std::string_view bytes) {
  const bool isNext = offset <= seen_ && seen_ < offset + bytes.size();
  if (!expected_.empty() && isNext)
    add(bytes.substr(static_cast<std::size_t>(seen_ - offset)));
  return !isWrong_;
}

void ContentCheck::add(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto piece = bytes.substr(0, static_cast<std::size_t>(partEnd_ - seen_));
    hasher_.add(piece);
    seen_ += piece.size();
    bytes.remove_prefix(piece.size());
    if (seen_ == partEnd_)
      endPart();
  }
  isWrong_ = seen_ == size_ && found() != expected_;
}

void ContentCheck::endPart() {
  digests_ += wire::bytesOf(hasher_.finish());
  if (seen_ < size_)
    partEnd_ = std::min(seen_ + sizeOfPart(++number_, partSize_), size_);
}

std::string ContentCheck::found() const {
  return partSize_ == 0 ? wire::hex(digests_)
                        : wire::hex(wire::bytesOf(wire::md5(digests_))) + "-" + std::to_string(number_);
}

}  // namespace foundation::storage::backend::s3::detail::stream
