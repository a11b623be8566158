#include <foundation/storage/backend/s3/detail/client/Completion.h>

#include <foundation/storage/backend/s3/detail/client/Creation.h>
#include <foundation/storage/backend/s3/detail/client/Integrity.h>
#include <foundation/storage/backend/s3/detail/client/Sight.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr auto operation = "CompleteMultipartUpload";
constexpr int badRequest = 400;
constexpr int notFound = 404;
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

/// Stores that keep the condition for what is written at once need not keep it here: so this looks, too.
void Completion::run(Existing existing) {
  if (existing == Existing::Replace)
    return settle(send(false));
  if (look(exchange_, bucket_, upload_.key, interrupt_))
    refuseExisting(operation, 0);
  const auto onCondition = exchange_.learnt().creation != Conditions::Ignored;
  const auto reply = send(onCondition);
  if (!onCondition || reply.answer.status < 300 || !mayRefuseConditions(refusalOf(reply.answer)))
    return settle(reply);
  settle(send(false));
  noteIgnored(exchange_.learnt());
}

Reply Completion::send(bool onCondition) {
  const auto body = wire::makeCompletion(parts_);
  Call call{.operation = operation,
            .method = "POST",
            .bucket = bucket_,
            .key = upload_.key,
            .query = {{"uploadId", upload_.id}},
            .headers = {{"content-type", "application/xml"}},
            .body = body,
            .alsoTaken = {notFound},
            .check = [](const http::HttpAnswer& answer) { wire::parseETag(answer.body); }};
  if (onCondition) {
    call.headers.push_back({"if-none-match", "*"});
    call.alsoTaken = {badRequest, notFound, exists, notImplemented};
  }
  try {
    return exchange_.send(call, interrupt_);
  } catch (const StoreFailure& failure) {
    // A store that answers may have acted on the attempt before, whatever it says of this one.
    if (failure.details().status == 0 || failure.details().attempts < 2 || !isDone())
      throw;
    return {};
  }
}

/// The upload is gone once it has been completed: by an attempt whose answer was lost, perhaps.
void Completion::settle(const Reply& reply) {
  const auto status = reply.answer.status;
  if (status < 300)
    return;
  const auto refusal = refusalOf(reply.answer);
  const auto isOpen = refusal.code == "NoSuchBucket" || (status != notFound && status != exists);
  if (!isOpen && reply.mayBeDone && isDone())
    return;
  if (status == exists)
    refuseExisting(operation, reply.attempts);
  throw failureOf(refusal, operation, reply.attempts);
}

bool Completion::isDone() {
  const auto sight = look(exchange_, bucket_, upload_.key, interrupt_);
  if (!sight || sight->object.size != size_)
    return false;
  return sight->object.eTag == eTagOfParts(parts_) ||
         (sight->isETagOpaque && endsWith(sight->object.eTag, "-" + std::to_string(parts_.size())));
}

}  // namespace foundation::storage::backend::s3::detail::client
