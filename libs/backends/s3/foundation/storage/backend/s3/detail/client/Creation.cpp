#include <foundation/storage/backend/s3/detail/client/Creation.h>

#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>
#include <foundation/storage/backend/s3/detail/client/Sight.h>
#include <foundation/storage/backend/support/Log.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr int badRequest = 400;
constexpr int exists = 412;
constexpr int notImplemented = 501;

}  // namespace

void refuseExisting(std::string_view operation, int attempts) {
  throw StoreFailure(provider::ErrorCode::ResourceAlreadyExists, "There is an object of that name already",
                     {.operation = std::string(operation), .attempts = attempts});
}

void noteIgnored(Learnt& learnt) {
  if (learnt.creation.exchange(Conditions::Ignored) != Conditions::Ignored)
    support::logError(
        "The object store does not keep the condition that an object is new: of two programs that create the same one "
        "at the same moment, both may succeed");
}

bool mayRefuseConditions(const Refusal& refusal) {
  if (refusal.status == notImplemented)
    return true;
  constexpr std::array codes{"", "NotImplemented", "InvalidArgument", "InvalidRequest"};
  return refusal.status == badRequest &&
         std::any_of(codes.begin(), codes.end(), [&](const char* code) { return refusal.code == code; });
}

Creation::Creation(Exchange& exchange, Call put, const wire::Md5& md5, http::Interrupt& interrupt)
    : exchange_(exchange), put_(std::move(put)), conditional_(put_), md5_(md5), interrupt_(interrupt) {
  conditional_.headers.push_back({"if-none-match", "*"});
  conditional_.alsoTaken = {badRequest, exists, notImplemented};
}

std::string Creation::run() {
  const auto conditions = exchange_.learnt().creation.load();
  if (conditions != Conditions::Kept && look(exchange_, put_.bucket, put_.key, interrupt_))
    refuseExisting(put_.operation, 1);
  return conditions == Conditions::Ignored ? putAnyway() : putOnCondition();
}

std::string Creation::putAnyway() { return eTagOf(exchange_.send(put_, interrupt_).answer.headers); }

std::string Creation::putOnCondition() {
  auto reply = exchange_.send(conditional_, interrupt_);
  auto& learnt = exchange_.learnt();
  if (reply.answer.status == exists) {
    learnt.creation = Conditions::Kept;
    if (const auto eTag = reply.mayBeDone ? findOurs(reply) : std::nullopt)
      return *eTag;
    refuseExisting(put_.operation, reply.attempts);
  }
  if (reply.answer.status < 300) {
    if (learnt.creation == Conditions::Unknown)
      tryCondition();
    return eTagOf(reply.answer.headers);
  }
  const auto refusal = refusalOf(reply.answer);
  if (!mayRefuseConditions(refusal))
    throw failureOf(refusal, put_.operation, reply.attempts);
  if (look(exchange_, put_.bucket, put_.key, interrupt_))
    refuseExisting(put_.operation, reply.attempts);
  auto eTag = putAnyway();
  noteIgnored(learnt);  // what is taken without the condition was refused for it
  return eTag;
}

std::optional<std::string> Creation::findOurs(const Reply& refused) {
  const auto sight = look(exchange_, put_.bucket, put_.key, interrupt_);
  if (!sight || sight->object.size != put_.body.size() ||
      !sight->canBeAsYoungAs(std::chrono::steady_clock::now() - refused.begun))
    return std::nullopt;
  if (sight->object.md5)
    return *sight->object.md5 == md5_ ? std::optional(sight->object.eTag) : std::nullopt;
  const auto found = exchange_.send({.operation = "GetObject",
                                     .method = "GET",
                                     .bucket = put_.bucket,
                                     .key = put_.key,
                                     .longestAnswer = std::max<std::uint64_t>(put_.body.size(), longestDocument)},
                                    interrupt_);
  return found.answer.body == put_.body ? std::optional(eTagOf(found.answer.headers)) : std::nullopt;
}

/// Sends the same content again, so that nothing is harmed where the store takes it.
void Creation::tryCondition() {
  try {
    const auto status = exchange_.send(conditional_, interrupt_).answer.status;
    if (status == exists)
      exchange_.learnt().creation = Conditions::Kept;
    else if (status < 300)
      noteIgnored(exchange_.learnt());
  } catch (const StoreFailure&) {
    // The object is there; what the store keeps, the next one will show.
  } catch (const http::Interrupted&) {
  }
}

}  // namespace foundation::storage::backend::s3::detail::client
