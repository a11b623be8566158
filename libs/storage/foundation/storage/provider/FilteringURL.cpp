#include <foundation/storage/provider/FilteringURL.h>

namespace foundation::storage::provider {
namespace {

/// `text` behind the last '+' at or before `last`.
std::u16string behindPlus(const std::u16string& text, std::size_t last) {
  const auto plus = text.rfind(u'+', last);
  return plus == std::u16string::npos ? text : text.substr(plus + 1);
}

/// The place on which all containers and filters of `location` rest.
network::IRI physicalIRI(StorageIRI location) {
  while (location.hasInnerIRI())
    location = location.getInnerIRI();
  return StorageIRI(getPhysicalURLFromFilteringURL(location.toString())).toIRI();
}

}  // namespace

std::u16string getPhysicalPartFromFilteringScheme(const std::u16string& scheme) {
  return behindPlus(scheme, std::u16string::npos);
}

std::u16string getPhysicalURLFromFilteringURL(const std::u16string& url) { return behindPlus(url, url.find(u':')); }

bool locationsAreEquivalent(const StorageIRI& a, const StorageIRI& b) {
  if (a.hasInnerIRI() && b.hasInnerIRI())
    return a == b;
  const auto left = physicalIRI(a);
  const auto right = physicalIRI(b);
  return left.getPath() == right.getPath() && left.getScheme() == right.getScheme() &&
         left.getAuthority() == right.getAuthority();
}

}  // namespace foundation::storage::provider
