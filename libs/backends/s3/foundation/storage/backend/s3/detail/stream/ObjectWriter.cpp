#include <foundation/storage/backend/s3/detail/stream/ObjectWriter.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

using client::StoreFailure;

ObjectWriter::ObjectWriter(client::Client client, std::string key, WriteMode mode, const Limits& limits)
    : client_(std::move(client)),
      key_(std::move(key)),
      mode_(std::move(mode)),
      limits_(limits),
      size_(mode_.kept ? mode_.kept->size : 0) {}

void ObjectWriter::write(std::string_view bytes) {
  if (upload_)
    upload_->check();
  while (!bytes.empty()) {
    const auto most = sizeOfPart(upload_ ? upload_->nextNumber() : 1, client_.settings().partSize);
    if (buffer_.size() >= most) {
      flush();
      buffer_.reserve(most);
      continue;
    }
    const auto piece = bytes.substr(0, most - buffer_.size());
    buffer_.append(piece);
    size_ += piece.size();
    bytes.remove_prefix(piece.size());
  }
}

void ObjectWriter::publish() {
  if (mode_.kept && size_ == mode_.kept->size)
    return;  // nothing was added
  try {
    send();
  } catch (const StoreFailure& failure) {
    if (isThere(failure))
      return;
    mayBeThere_ = mayBeThere_ || failure.details().mayBeDone;
    throw;
  }
}

void ObjectWriter::send() {
  if (!upload_ && !keepsByCopying())
    return putWhole();
  if (std::exchange(wasTried_, true) && upload_)
    upload_->retry();
  flush();
  upload_->complete(mode_.existing);
}

void ObjectWriter::abort() {
  buffer_ = std::string();
  if (upload_)
    upload_->abort();
}

void ObjectWriter::abandon() noexcept {
  buffer_ = std::string();
  if (upload_)
    upload_->abandon();
}

bool ObjectWriter::keepsByCopying() const { return mode_.kept && mode_.kept->size >= limits_.smallestPart; }

wire::Headers ObjectWriter::headers() const {
  if (mode_.kept)
    return takenOver(mode_.kept->kept);
  return {{std::string(partSizeHeader), std::to_string(client_.settings().partSize)}};
}

void ObjectWriter::flush() {
  begin();
  if (!buffer_.empty())
    upload_->add(std::move(buffer_));
  buffer_.clear();
}

/// Goes on where it has thrown.
void ObjectWriter::begin() {
  if (!keepsByCopying())
    readKept();
  if (!upload_)
    upload_ = std::make_unique<Upload>(client_, key_, headers());
  if (keepsByCopying())
    copyKept();
}

void ObjectWriter::copyKept() {
  const auto ranges = divide(mode_.kept->size, copiedPart(client_, key_, limits_));
  for (; copied_ < ranges.size(); ++copied_)
    upload_->add(Upload::Source{key_, mode_.kept->eTag, ranges[copied_]});
}

void ObjectWriter::readKept() {
  if (isKeptRead_ || !mode_.kept || mode_.kept->size == 0)
    return;
  const auto size = mode_.kept->size;
  const auto piece = client_.read(key_, {0, size}, mode_.kept->eTag);
  if (piece.bytes.size() != size)
    throw StoreFailure(provider::ErrorCode::ResourceInUse, "The object was changed while it was being written");
  buffer_.insert(0, piece.bytes);
  isKeptRead_ = true;
}

void ObjectWriter::putWhole() {
  readKept();
  client_.put(key_, buffer_, mode_.existing, mode_.kept ? takenOver(mode_.kept->kept) : wire::Headers());
}

std::string ObjectWriter::eTag() const {
  return upload_ ? upload_->eTag() : wire::hex(wire::bytesOf(wire::md5(buffer_)));
}

/// Whether it is refused only because it was published before, when the answer was lost.
bool ObjectWriter::isThere(const StoreFailure& failure) const {
  const auto isTakenForSecond =
      failure.errorCode() == provider::ErrorCode::ResourceAlreadyExists || failure.details().code == "NoSuchUpload";
  if (!mayBeThere_ || !isTakenForSecond)
    return false;
  const auto object = client_.head(key_);
  return object && object->size == size_ && !object->eTag.empty() && object->eTag == eTag();
}

}  // namespace foundation::storage::backend::s3::detail::stream
