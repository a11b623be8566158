#include <foundation/storage/backend/s3/detail/client/CopySource.h>

#include <foundation/storage/backend/s3/detail/client/Sight.h>
#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr int changed = 412;
constexpr auto impossibleETag = "00000000000000000000000000000000-0";

}  // namespace

void refuseChanged(std::string_view operation, int attempts) {
  throw StoreFailure(
      provider::ErrorCode::ResourceInUse, "The object has been changed while it was copied: copy it again",
      {.operation = std::string(operation), .status = changed, .code = "PreconditionFailed", .attempts = attempts});
}

CopySource::CopySource(Exchange& exchange, std::string bucket, std::string key, std::string eTag,
                       http::Interrupt& interrupt)
    : exchange_(exchange),
      bucket_(std::move(bucket)),
      key_(std::move(key)),
      eTag_(std::move(eTag)),
      interrupt_(interrupt) {}

wire::Header CopySource::header() const {
  return {"x-amz-copy-source", "/" + wire::encode(bucket_) + "/" + wire::encodePath(key_)};
}

Reply CopySource::send(Call copy) const {
  if (eTag_.empty() || isCondition(Conditions::Ignored))
    return exchange_.send(copy, interrupt_);
  auto reply = sendOn(copy, eTag_);
  if (reply.answer.status != changed)
    return reply;
  requireSame(copy.operation);
  exchange_.learnt().copying = Conditions::Ignored;  // refused for a change that there was not
  return exchange_.send(copy, interrupt_);
}

void CopySource::requireUnchanged(std::string_view operation) const {
  if (!eTag_.empty() && !isCondition(Conditions::Kept))
    requireSame(operation);
}

void CopySource::tryCondition(Call copy) const {
  if (eTag_.empty() || !isCondition(Conditions::Unknown))
    return;
  const auto isKept = sendOn(std::move(copy), impossibleETag).answer.status == changed;
  exchange_.learnt().copying = isKept ? Conditions::Kept : Conditions::Ignored;
}

Reply CopySource::sendOn(Call copy, const std::string& eTag) const {
  copy.headers.push_back({"x-amz-copy-source-if-match", '"' + eTag + '"'});
  copy.alsoTaken.push_back(changed);
  return exchange_.send(copy, interrupt_);
}

void CopySource::requireSame(std::string_view operation) const {
  const auto sight = look(exchange_, bucket_, key_, interrupt_);
  if (!sight || sight->object.eTag != eTag_)
    refuseChanged(operation, 1);
}

}  // namespace foundation::storage::backend::s3::detail::client
