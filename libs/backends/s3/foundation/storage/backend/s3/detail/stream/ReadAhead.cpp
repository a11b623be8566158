#include <foundation/storage/backend/s3/detail/stream/ReadAhead.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

using client::ObjectInfo;
using client::Range;
using client::StoreFailure;
using provider::ErrorCode;

namespace {

/// What a small object does not exceed, so that one request fetches it.
constexpr std::uint64_t firstPiece = 1024 * 1024;
/// Who goes elsewhere may want a few bytes only, but waits for each request.
constexpr std::uint64_t pieceAfterLeap = 128 * 1024;

bool areSame(const ObjectInfo& one, const ObjectInfo& other) {
  return one.size == other.size && one.eTag == other.eTag &&
         (!one.eTag.empty() || one.lastModified == other.lastModified);
}

std::string fetchPiece(const client::Client& client, const std::string& key, const ObjectInfo& object, Range range) {
  auto piece = client.read(key, range, object.eTag);
  if (!areSame(piece.object, object))
    throw StoreFailure(ErrorCode::ResourceInUse, "The object was changed while it was being read");
  if (piece.bytes.size() != range.size)
    throw StoreFailure(ErrorCode::IOError, "The store has sent less than the object holds");
  return std::move(piece.bytes);
}

}  // namespace

ReadAhead::ReadAhead(client::Client client, std::string key)
    : client_(std::move(client)),
      key_(std::move(key)),
      endable_(std::make_unique<EndableClient>(client_)),
      step_(std::min(firstPiece, client_.settings().partSize)) {
  auto piece = endable_->get().read(key_, {0, step_});
  object_ = std::move(piece.object);
  bytes_ = std::move(piece.bytes);
  if (bytes_.size() != std::min(step_, object_.size))
    throw StoreFailure(ErrorCode::IOError, "The store has sent less than the object holds");
}

ReadAhead::~ReadAhead() { endAll(); }

std::string_view ReadAhead::at(std::uint64_t position) {
  if (position < offset_ || position > end())
    leapTo(position);
  if (position >= end())
    goOn();
  return std::string_view(bytes_).substr(static_cast<std::size_t>(position - offset_));
}

void ReadAhead::leapTo(std::uint64_t position) {
  if (position > end() && !coming_.empty() && position < coming_.front().end())
    return;  // a short one, into what is on its way
  beginAnewAt(position);
  step_ = std::min(pieceAfterLeap, client_.settings().partSize) / 2;
  inOrder_ = -1;
}

void ReadAhead::goOn() {
  step_ = std::min(2 * step_, client_.settings().partSize);
  ++inOrder_;
  offset_ = end();
  bytes_ = std::string();  // before others come
  if (coming_.empty())
    fetch(offset_, std::launch::deferred);  // by this thread, which waits for it
  const auto ahead = static_cast<std::size_t>(std::clamp(inOrder_, 0, mostAhead()));
  for (auto next = coming_.back().end(); next < object_.size && coming_.size() <= ahead; next = coming_.back().end())
    fetch(next, std::launch::async | std::launch::deferred);
  take();
}

void ReadAhead::fetch(std::uint64_t offset, std::launch policy) {
  const Range range{offset, std::min(step_, object_.size - offset)};
  auto bytes = std::async(policy, [client = endable_->get(), key = key_, object = object_, range] {
    return fetchPiece(client, key, object, range);
  });
  coming_.push_back({range, std::move(bytes)});
}

void ReadAhead::take() {
  auto fetch = std::move(coming_.front());
  coming_.pop_front();
  try {
    bytes_ = fetch.bytes.get();
  } catch (...) {
    beginAnewAt(offset_);
    throw;
  }
}

void ReadAhead::beginAnewAt(std::uint64_t position) {
  endAll();
  endable_ = std::make_unique<EndableClient>(client_);
  offset_ = position;
  bytes_ = std::string();
}

void ReadAhead::endAll() noexcept {
  if (coming_.empty())
    return;
  endable_->end();
  coming_.clear();
}

int ReadAhead::mostAhead() const { return static_cast<int>(client_.settings().parallelParts) - 1; }

}  // namespace foundation::storage::backend::s3::detail::stream
