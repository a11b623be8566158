#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/Sight.h>

#include <algorithm>

namespace foundation::storage::backend::s3::detail::client {

namespace {

/// A store that errs must not have callers go round for ever, nor take names off keys that do not begin so.
void requireAsked(const wire::ListPage& page, const std::string& prefix, const std::string& token) {
  if (!token.empty() && page.nextToken == token)
    throw BadAnswer("The listing leads back to the same page");
  const auto isAsked = [&prefix](const std::string& key) { return key.starts_with(prefix); };
  if (!std::all_of(page.prefixes.begin(), page.prefixes.end(), isAsked) ||
      !std::all_of(page.objects.begin(), page.objects.end(), [&](const auto& object) { return isAsked(object.key); }))
    throw BadAnswer("The listing has names that were not asked for");
}

}  // namespace

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
  call.check = [&](const http::HttpAnswer& answer) {
    page = wire::parseListPage(answer.body);
    requireAsked(page, listing.prefix, token);
  };
  exchange_->send(call, *interrupt_);
  return page;
}

}  // namespace foundation::storage::backend::s3::detail::client
