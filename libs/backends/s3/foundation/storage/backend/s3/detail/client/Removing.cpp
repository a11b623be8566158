#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/Integrity.h>
#include <foundation/storage/backend/s3/detail/client/RetryPolicy.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr std::size_t largestBatch = 1000;
constexpr int notAllowed = 405;
constexpr int notImplemented = 501;

bool isFinal(const wire::FailedDeletion& failed) {
  const http::HttpAnswer answer{.status = 200, .headers = {}, .body = {}};
  return setbackOf(answer, failed.code).outlook == Outlook::Final;
}

}  // namespace

void Client::remove(const std::string& key) const {
  const auto reply = exchange_->send(
      {.operation = "DeleteObject", .method = "DELETE", .bucket = bucket_, .key = key, .alsoTaken = {404}},
      *interrupt_);
  if (const auto refusal = refusalOf(reply.answer); refusal.code == "NoSuchBucket")
    throw failureOf(refusal, "DeleteObject", reply.attempts);
}

std::vector<wire::FailedDeletion> Client::remove(const std::vector<std::string>& keys) const {
  std::vector<wire::FailedDeletion> failed;
  std::vector<std::string> batch;
  for (const auto& key : keys) {
    if (!wire::canBeInXml(key)) {
      removeSingly(key, failed);
      continue;
    }
    batch.push_back(key);
    if (batch.size() == largestBatch)
      removeBatch(std::exchange(batch, {}), failed);
  }
  if (!batch.empty())
    removeBatch(batch, failed);
  return failed;
}

void Client::removeBatch(const std::vector<std::string>& keys, std::vector<wire::FailedDeletion>& failed) const {
  auto& works = exchange_->learnt().deletesInBatches;
  std::vector<wire::FailedDeletion> refused;
  if (works) {
    const auto body = wire::makeDeletion(keys);
    const auto reply = exchange_->send(
        {.operation = "DeleteObjects",
         .method = "POST",
         .bucket = bucket_,
         .query = {{"delete", ""}},
         .headers = {{"content-type", "application/xml"}, md5Header(wire::md5(body))},
         .body = body,
         .alsoTaken = {notAllowed, notImplemented},
         .check = [&refused](const http::HttpAnswer& answer) { refused = wire::parseDeletionResult(answer.body); }},
        *interrupt_);
    works = reply.answer.status < 300;
  }
  if (!works)
    for (const auto& key : keys)
      removeSingly(key, failed);
  for (auto& one : refused)
    if (isFinal(one))
      failed.push_back(std::move(one));
    else
      removeSingly(one.key, failed);
}

/// What has failed without an answer would do so with the next one, too.
void Client::removeSingly(const std::string& key, std::vector<wire::FailedDeletion>& failed) const {
  try {
    remove(key);
  } catch (const StoreFailure& failure) {
    const auto& details = failure.details();
    if (details.status == 0)
      throw;
    failed.push_back({key, details.code, details.message});
  }
}

}  // namespace foundation::storage::backend::s3::detail::client
