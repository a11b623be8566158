#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>
#include <foundation/storage/backend/s3/detail/wire/XmlReader.h>

#include <charconv>

namespace foundation::storage::backend::s3::detail::wire {

namespace {

std::uint64_t sizeOf(pugi::xml_node object) {
  const auto text = requiredTextOf(object, "Size");
  std::uint64_t size = 0;
  const auto* const end = text.data() + text.size();
  if (const auto [stop, error] = std::from_chars(text.data(), end, size); error != std::errc() || stop != end)
    throw MalformedDocument("The store gives \"" + text + "\" as the size of an object");
  return size;
}

}  // namespace

ListPage parseListPage(std::string_view body) {
  const XmlReader document(body, {"ListBucketResult"});
  const auto root = document.root();
  const KeyReader keys(root);
  ListPage page;
  forEachChild(root, "Contents", [&](pugi::xml_node object) {
    page.objects.push_back({keys.requiredTextOf(object, "Key"), sizeOf(object),
                            parseIsoTime(textOf(object, "LastModified")),
                            std::string(unquoted(textOf(object, "ETag")))});
  });
  forEachChild(root, "CommonPrefixes",
               [&](pugi::xml_node prefix) { page.prefixes.push_back(keys.requiredTextOf(prefix, "Prefix")); });
  if (textOf(root, "IsTruncated") == "true")
    page.nextToken = requiredTextOf(root, "NextContinuationToken");
  return page;
}

}  // namespace foundation::storage::backend::s3::detail::wire
