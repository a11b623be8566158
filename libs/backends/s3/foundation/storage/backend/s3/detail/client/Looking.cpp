#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/Sight.h>

namespace foundation::storage::backend::s3::detail::client {

std::optional<ObjectInfo> Client::head(const std::string& key) const {
  if (const auto sight = look(*exchange_, bucket_, key, *interrupt_))
    return sight->object;
  requireBucket();
  return std::nullopt;
}

/// An answer to HEAD that there is nothing cannot say what is missing.
void Client::requireBucket() const {
  auto& learnt = exchange_->learnt();
  if (learnt.hasBucket(bucket_))
    return;
  const auto found = exchange_->send(
      {.operation = "HeadBucket", .method = "HEAD", .bucket = bucket_, .alsoTaken = {403, 404}}, *interrupt_);
  if (found.answer.status == 404)
    throw failureOf({.status = 404, .code = "NoSuchBucket"}, "HeadBucket", found.attempts);
  learnt.addBucket(bucket_);  // one that we may not look at is there, too
}

wire::ListPage Client::list(const Listing& listing, const std::string& token) const {
  Call call{.operation = "ListObjectsV2",
            .method = "GET",
            .bucket = bucket_,
            .query = {{"list-type", "2"}, {"encoding-type", "url"}, {"max-keys", std::to_string(listing.most)}}};
  const auto add = [&call](const char* name, const std::string& value) {
    if (!value.empty())
      call.query.push_back({name, value});
  };
  add("prefix", listing.prefix);
  add("delimiter", listing.delimiter);
  add("start-after", listing.startAfter);
  add("continuation-token", token);
  wire::ListPage page;
  call.check = [&page](const http::HttpAnswer& answer) { page = wire::parseListPage(answer.body); };
  exchange_->send(call, *interrupt_);
  return page;
}

}  // namespace foundation::storage::backend::s3::detail::client
