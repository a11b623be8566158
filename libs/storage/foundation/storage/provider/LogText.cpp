#include <foundation/storage/provider/LogText.h>

#include <fl/i18n/Convert.h>

namespace foundation::storage::provider {
namespace {

std::u16string withoutPassword(const network::IRI& iri) {
  const auto userInfo = iri.getUserInfo(network::IRIEncoding::Display);
  const auto colon = userInfo.find(u':');
  if (colon == std::u16string::npos)
    return iri.text();
  auto text = iri.text();
  const auto begin = text.find(u"//") + 2 + colon + 1;
  return text.replace(begin, userInfo.size() - colon - 1, u"***");
}

std::u16string logText(const StorageIRI& location) {
  if (!location.hasInnerIRI())
    return withoutPassword(location.toIRI());
  const auto& text = location.toString();
  return location.getScheme() + u":" + logText(location.getInnerIRI()) + text.substr(text.rfind(u'!'));
}

}  // namespace

std::string toLogText(const StorageIRI& location) { return fl::i18n::to_string(logText(location)); }

}  // namespace foundation::storage::provider
