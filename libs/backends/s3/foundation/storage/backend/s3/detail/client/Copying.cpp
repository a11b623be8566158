#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/Sight.h>
#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr int changed = 412;
constexpr auto condition = "x-amz-copy-source-if-match";
/// No object has it.
constexpr auto impossibleETag = "\"00000000000000000000000000000000-0\"";

wire::Header sourceHeader(const std::string& bucket, const std::string& key) {
  return {"x-amz-copy-source", "/" + wire::encode(bucket) + "/" + wire::encodePath(key)};
}

StoreFailure changedFailure(std::string_view operation, int attempts) {
  return {provider::ErrorCode::ResourceInUse,
          "The object has been changed while it was copied: copy it again",
          {.operation = std::string(operation), .status = changed, .code = "PreconditionFailed", .attempts = attempts}};
}

std::string requiredETag(const http::HttpAnswer& answer) {
  auto eTag = wire::parseETag(answer.body);
  if (eTag.empty())
    throw BadAnswer("The answer has no ETag");
  return eTag;
}

/// Found out with a condition that does not hold: who copies in spite of it, ignores it.
bool keepsCondition(Exchange& exchange, Call copy, http::Interrupt& interrupt) {
  auto& known = exchange.learnt().copying;
  if (known == Conditions::Unknown) {
    copy.headers.push_back({condition, impossibleETag});
    copy.alsoTaken = {changed};
    known = exchange.send(copy, interrupt).answer.status == changed ? Conditions::Kept : Conditions::Ignored;
  }
  return known == Conditions::Kept;
}

}  // namespace

/// For stores that ignore the condition.
void Client::requireUnchanged(const std::string& key, const std::string& eTag, std::string_view operation) const {
  const auto sight = look(*exchange_, bucket_, key, *interrupt_);
  if (!sight || sight->object.eTag != eTag)
    throw changedFailure(operation, 1);
}

void Client::copy(const std::string& sourceBucket, const std::string& sourceKey, const std::string& eTag,
                  const std::string& key) const {
  std::string copied;
  Call call{.operation = "CopyObject",
            .method = "PUT",
            .bucket = bucket_,
            .key = key,
            .headers = {sourceHeader(sourceBucket, sourceKey)},
            .alsoTaken = {changed},
            .check = [&copied](const http::HttpAnswer& answer) { copied = wire::parseETag(answer.body); }};
  if (!eTag.empty())
    call.headers.push_back({condition, '"' + eTag + '"'});
  const auto reply = exchange_->send(call, *interrupt_);
  if (reply.answer.status == changed)
    throw changedFailure(call.operation, reply.attempts);
  if (!eTag.empty() && copied != eTag && exchange_->learnt().copying != Conditions::Kept)
    withBucket(sourceBucket).requireUnchanged(sourceKey, eTag, call.operation);
}

bool Client::copiesParts(const std::string& sourceKey) { return sourceKey.find('%') == std::string::npos; }

wire::Part Client::copyPart(const UploadId& upload, int number, const std::string& sourceBucket,
                            const std::string& sourceKey, const Range& range, const std::string& eTag) const {
  const auto source = withBucket(sourceBucket);
  if (!copiesParts(sourceKey)) {
    const auto piece = source.read(sourceKey, range, eTag);
    if (piece.bytes.size() != range.size)
      throw changedFailure("GetObject", 1);
    return uploadPart(upload, number, piece.bytes);
  }
  wire::Part part{number, {}};
  Call call{.operation = "UploadPartCopy",
            .method = "PUT",
            .bucket = bucket_,
            .key = upload.key,
            .query = {{"partNumber", std::to_string(number)}, {"uploadId", upload.id}},
            .headers = {sourceHeader(sourceBucket, sourceKey),
                        {"x-amz-copy-source-range", "bytes=" + std::to_string(range.offset) + "-" +
                                                        std::to_string(range.offset + range.size - 1)}},
            .check = [&part](const http::HttpAnswer& answer) { part.eTag = requiredETag(answer); }};
  if (eTag.empty()) {
    exchange_->send(call, *interrupt_);
    return part;
  }
  const auto isKept = keepsCondition(*exchange_, call, *interrupt_);
  call.headers.push_back({condition, '"' + eTag + '"'});
  call.alsoTaken = {changed};
  const auto reply = exchange_->send(call, *interrupt_);
  if (reply.answer.status == changed)
    throw changedFailure(call.operation, reply.attempts);
  if (!isKept)
    source.requireUnchanged(sourceKey, eTag, call.operation);
  return part;
}

}  // namespace foundation::storage::backend::s3::detail::client
