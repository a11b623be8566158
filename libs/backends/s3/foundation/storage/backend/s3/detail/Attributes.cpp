#include <foundation/storage/backend/s3/detail/Attributes.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <string_view>

namespace foundation::storage::backend::s3::detail {

using boost::posix_time::ptime;
using provider::ExtendedAttributes;

namespace {

bool isHidden(std::u16string_view path) { return path.substr(path.rfind(u'/') + 1).starts_with(u'.'); }

ptime wholeSeconds(const ptime& time) {
  return time.is_special() ? time : ptime(time.date(), boost::posix_time::seconds(time.time_of_day().total_seconds()));
}

std::string inWords(client::Conditions conditions) {
  switch (conditions) {
    case client::Conditions::Kept:
      return "kept";
    case client::Conditions::Ignored:
      return "ignored";
    case client::Conditions::Unknown:
      break;
  }
  return "unknown";
}

}  // namespace

provider::FileAttributes attributesOfFile(const std::u16string& path, std::uint64_t size, const ptime& lastModified) {
  provider::FileAttributes attributes(size, wholeSeconds(lastModified), true);
  return attributes.withHiddenAttribute(isHidden(path));
}

provider::FolderAttributes attributesOfFolder(const std::u16string& path) {
  provider::FolderAttributes attributes(ptime(), true);
  return attributes.withHiddenAttribute(isHidden(path));
}

ExtendedAttributes objectAttributes(const client::ObjectInfo& object) {
  ExtendedAttributes::Map attributes;
  if (!object.eTag.empty())
    attributes.emplace("etag", object.eTag);
  for (const auto& header : object.kept)
    attributes.emplace(header.name, header.value);
  return ExtendedAttributes(attributes);
}

ExtendedAttributes bucketAttributes(const client::Client& client) {
  return ExtendedAttributes({{"conditions", inWords(client.conditions())}});
}

}  // namespace foundation::storage::backend::s3::detail
