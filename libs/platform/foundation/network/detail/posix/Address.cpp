#include <foundation/network/detail/Address.h>

#include <fl/i18n/Convert.h>
#include <foundation/network/detail/Characters.h>

#include <arpa/inet.h>

#include <algorithm>

namespace foundation::network::detail {
namespace {

bool isVersion6(std::u16string_view text) {
  in6_addr parsed;
  return text.find(u'\0') == std::u16string_view::npos &&
         inet_pton(AF_INET6, fl::i18n::to_string(text).c_str(), &parsed) == 1;
}

bool isFutureVersion(std::u16string_view text) {
  const auto dot = text.find(u'.');
  if (text.empty() || (text[0] | 0x20) != u'v' || dot == std::u16string_view::npos)
    return false;
  const auto all = [](std::u16string_view part, Allowed where) {
    return !part.empty() && std::all_of(part.begin(), part.end(), [&](char16_t u) { return isAllowedAscii(u, where); });
  };
  return all(text.substr(1, dot - 1), isHexDigit) && all(text.substr(dot + 1), inUserInfo);
}

}  // namespace

bool isBracketedAddress(std::u16string_view text) { return isVersion6(text) || isFutureVersion(text); }

}  // namespace foundation::network::detail
