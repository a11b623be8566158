#include <foundation/storage/backend/s3/detail/Pages.h>

#include <foundation/storage/backend/s3/detail/Place.h>

namespace foundation::storage::backend::s3::detail {

namespace {

bool isEmpty(const wire::ListPage& page) { return page.objects.empty() && page.prefixes.empty(); }

}  // namespace

wire::ListPage firstPage(const client::Client& client, const client::Client::Listing& listing) {
  if (listing.prefix.size() > longestKey)
    return {};
  auto page = client.list(listing);
  while (isEmpty(page) && !page.nextToken.empty())
    page = client.list(listing, page.nextToken);
  return page;
}

bool anyBeginsWith(const client::Client& client, const std::string& prefix) {
  return !isEmpty(firstPage(client, {.prefix = prefix, .most = 1}));
}

FolderContent contentOf(const client::Client& client, const std::string& prefix) {
  const auto page = firstPage(client, {.prefix = prefix, .most = 2});
  if (page.objects.empty())
    return FolderContent::Missing;
  if (page.objects.size() > 1 || page.objects.front().key != prefix)
    return FolderContent::Entries;
  const bool hasMore = !page.nextToken.empty() &&
                       !firstPage(client, {.prefix = prefix, .startAfter = prefix, .most = 1}).objects.empty();
  return hasMore ? FolderContent::Entries : FolderContent::OnlyMarker;
}

}  // namespace foundation::storage::backend::s3::detail
