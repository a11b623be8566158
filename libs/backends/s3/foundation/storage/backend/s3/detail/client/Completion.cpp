#include <foundation/storage/backend/s3/detail/client/Completion.h>

#include <foundation/storage/backend/s3/detail/client/Creation.h>
#include <foundation/storage/backend/s3/detail/client/Integrity.h>
#include <foundation/storage/backend/s3/detail/client/Sight.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr auto operation = "CompleteMultipartUpload";
constexpr int badRequest = 400;
constexpr int exists = 412;
constexpr int notImplemented = 501;

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

Completion::Completion(Exchange& exchange, std::string bucket, const UploadId& upload,
                       const std::vector<wire::Part>& parts, std::uint64_t size, http::Interrupt& interrupt)
    : exchange_(exchange),
      bucket_(std::move(bucket)),
      upload_(upload),
      parts_(parts),
      size_(size),
      interrupt_(interrupt) {}

void Completion::run(Existing existing) {
  try {
    if (existing == Existing::Replace)
      send(If::Anything);
    else
      create();
  } catch (const StoreFailure& failure) {
    // The upload is gone once it has been completed: by an attempt whose answer was lost, perhaps. A store that did not
    // answer at all is not asked for more.
    const auto& details = failure.details();
    if (!details.mayBeDone || details.status == 0 || !isDone())
      throw;
  }
}

/// Stores that keep the condition for what is written at once need not keep it here: so this looks, too.
void Completion::create() {
  if (look(exchange_, bucket_, upload_.key, interrupt_))
    refuseExisting(operation, 0);
  if (exchange_.learnt().creation == Conditions::Ignored) {
    send(If::Anything);
    return;
  }
  const auto reply = send(If::Nothing);
  const auto status = reply.answer.status;
  if (status < 300 || (status == exists && reply.mayBeDone && isDone()))
    return;
  if (status == exists)
    refuseExisting(operation, reply.attempts);
  const auto refusal = refusalOf(reply.answer);
  if (!mayRefuseConditions(refusal))
    throw failureOf(refusal, operation, reply.attempts);
  send(If::Anything);
  noteIgnored(exchange_.learnt());
}

Reply Completion::send(If what) {
  const auto body = wire::makeCompletion(parts_);
  Call call{.operation = operation,
            .method = "POST",
            .bucket = bucket_,
            .key = upload_.key,
            .query = {{"uploadId", upload_.id}},
            .headers = {{"content-type", "application/xml"}},
            .body = body,
            .check = [](const http::HttpAnswer& answer) { wire::parseETag(answer.body); }};
  if (what == If::Nothing) {
    call.headers.push_back({"if-none-match", "*"});
    call.alsoTaken = {badRequest, exists, notImplemented};
  }
  return exchange_.send(call, interrupt_);
}

bool Completion::isDone() {
  const auto sight = look(exchange_, bucket_, upload_.key, interrupt_);
  if (!sight || sight->object.size != size_)
    return false;
  if (sight->object.eTag.empty())
    return false;
  return sight->object.eTag == eTagOfParts(parts_) ||
         (sight->object.isETagOpaque && endsWith(sight->object.eTag, "-" + std::to_string(parts_.size())));
}

}  // namespace foundation::storage::backend::s3::detail::client
