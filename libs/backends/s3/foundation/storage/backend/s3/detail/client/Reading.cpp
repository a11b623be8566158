#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/Integrity.h>
#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>
#include <foundation/storage/backend/s3/detail/client/Sight.h>

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <locale>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr auto operation = "GetObject";
constexpr int partial = 206;
constexpr int changed = 412;
constexpr int behindEnd = 416;
/// In bytes, of the objects that are taken from a store that knows no ranges.
constexpr std::uint64_t largestWhole = std::uint64_t{256} << 20;

std::optional<ContentRange> rangeOf(const http::HttpAnswer& answer) {
  const auto* const header = wire::findHeader(answer.headers, "content-range");
  return header ? parseContentRange(*header) : std::nullopt;
}

/// Else the connection's end is the content's, which one that breaks off looks like, too.
bool saysWhereItEnds(const wire::Headers& headers) {
  const auto* const coding = wire::findHeader(headers, "transfer-encoding");
  return coding ? boost::algorithm::iequals(*coding, "chunked", std::locale::classic())
                : wire::findHeader(headers, "content-length") != nullptr;
}

/// A store that knows no ranges gives the whole object.
void requirePiece(const http::HttpAnswer& answer, const Range& range) {
  if (answer.status != partial) {
    if (!saysWhereItEnds(answer.headers))
      throw BadAnswer("The answer does not tell where the content ends");
    return requireIntact(answer);
  }
  const auto given = rangeOf(answer);
  const auto size = answer.body.size();
  if (!given || given->first != range.offset || given->last - given->first + 1 != size ||
      size != std::min(range.size, given->total - range.offset))
    throw BadAnswer("The answer is not the part of the object that was asked for");
  if (size == given->total)
    requireIntact(answer);
}

Piece takePiece(http::HttpAnswer answer, const Range& range) {
  Piece piece{objectInfoOf(answer.headers), range.offset, std::move(answer.body)};
  if (answer.status == partial) {
    piece.object.size = rangeOf(answer)->total;
    return piece;
  }
  piece.object.size = piece.bytes.size();
  piece.bytes.erase(0, std::min(range.offset, piece.object.size));
  piece.bytes.resize(std::min<std::uint64_t>(range.size, piece.bytes.size()));
  return piece;
}

StoreFailure changedFailure(int attempts) {
  return {provider::ErrorCode::ResourceInUse,
          "The object has been changed while it was read: read it again",
          {.operation = operation, .status = changed, .code = "PreconditionFailed", .attempts = attempts}};
}

}  // namespace

Piece Client::read(const std::string& key, const Range& range, const std::string& eTag) const {
  Call call{.operation = operation,
            .method = "GET",
            .bucket = bucket_,
            .key = key,
            .headers = {{"range", formatRange(range)}},
            .alsoTaken = {changed, behindEnd},
            .longestAnswer = std::max(range.size, largestWhole),
            .check = [&range](const http::HttpAnswer& answer) { requirePiece(answer, range); }};
  if (!eTag.empty())
    call.headers.push_back({"if-match", '"' + eTag + '"'});
  auto reply = exchange_->send(call, *interrupt_);
  if (reply.answer.status == changed)
    throw changedFailure(reply.attempts);
  auto piece = reply.answer.status == behindEnd ? nothingBehind(key, range) : takePiece(std::move(reply.answer), range);
  if (!eTag.empty() && piece.object.eTag != eTag)
    throw changedFailure(reply.attempts);
  return piece;
}

/// Not all stores tell the object's size with the answer that a range begins behind its end.
Piece Client::nothingBehind(const std::string& key, const Range& range) const {
  auto sight = look(*exchange_, bucket_, key, *interrupt_);
  if (!sight)
    throw failureOf({.status = 404, .code = "NoSuchKey"}, operation, 1);
  if (sight->object.size > range.offset)
    throw changedFailure(1);
  return {std::move(sight->object), range.offset, {}};
}

}  // namespace foundation::storage::backend::s3::detail::client
