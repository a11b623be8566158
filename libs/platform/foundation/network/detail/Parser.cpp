#include <foundation/network/detail/Parser.h>

#include <fl/i18n/Convert.h>
#include <fl/i18n/Surrogates.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/network/detail/Address.h>
#include <foundation/network/detail/Characters.h>

#include <algorithm>
namespace foundation::network::detail {
namespace {

class Parser {
 public:
  explicit Parser(const std::u16string& text) : text_(text) {}

  Parts parse() {
    if (text_.size() > maximalLength)
      refuse(maximalLength, "the text is too long");
    parseScheme();
    if (at_ + 1 < text_.size() && text_[at_] == u'/' && text_[at_ + 1] == u'/')
      parseAuthority();
    parsePath();
    parseQuery();
    parseFragment();
    return parts_;
  }

 private:
  void parseScheme() {
    std::size_t end = 0;
    while (end < text_.size() && isAllowedAscii(text_[end], inScheme))
      ++end;
    if (end == text_.size() || text_[end] != u':')
      return;  // a relative reference
    if (end == 0 || !isAsciiLetter(text_[0]))
      refuse(0, end == 0 ? "the scheme before ':' is empty" : "a scheme begins with a letter");
    parts_.hasScheme = true;
    at_ = end + 1;
  }

  void parseAuthority() {
    parts_.hasAuthority = true;
    at_ += 2;
    const auto end = std::min(text_.find_first_of(u"/?#", at_), text_.size());
    const auto userInfoEnd = text_.rfind(u'@', end == 0 ? 0 : end - 1);
    if (userInfoEnd != std::u16string::npos && userInfoEnd >= at_ && userInfoEnd < end) {
      pass(inUserInfo, "user information", [&](char16_t) { return at_ == userInfoEnd; });
      at_ = userInfoEnd + 1;
    }
    if (at_ < end && text_[at_] == u'[')
      parseAddress(end);
    else
      pass(inHost, "a host",
           [](char16_t unit) { return unit == u'/' || unit == u'?' || unit == u'#' || unit == u':'; });
    if (at_ < end)
      parsePort(end);
  }

  /// A host in brackets: an IPv6 address, or "v", hexadecimal digits, "." and a future form of address.
  void parseAddress(std::size_t end) {
    const auto close = text_.find(u']', at_);
    if (close >= end)
      refuse(at_, "the '[' of an address is not closed");
    const auto address = std::u16string_view(text_).substr(at_ + 1, close - at_ - 1);
    if (!isBracketedAddress(address))
      refuse(at_, "what stands in brackets is no IPv6 address");
    at_ = close + 1;
  }

  void parsePort(std::size_t end) {
    if (text_[at_] != u':')
      refuse(at_, "only a port may follow the address");
    for (++at_; at_ < end; ++at_)
      if (text_[at_] < u'0' || text_[at_] > u'9')
        refuse(at_, "a port has digits only");
  }

  void parsePath() {
    const bool isReference = !parts_.hasScheme && !parts_.hasAuthority;
    parts_.pathBegin = at_ & maximalLength;
    sawEscape_ = false;
    const bool isOpaque = parts_.hasScheme && !parts_.hasAuthority && (at_ == text_.size() || text_[at_] != u'/');
    pass(isOpaque ? inOpaquePath : inPath, "a path", [](char16_t unit) { return unit == u'?' || unit == u'#'; });
    parts_.pathHasEscapes = sawEscape_;
    parts_.pathIsCanonical = !sawEscape_;
    parts_.pathEnd = at_ & maximalLength;
    if (!isReference)
      return;
    const auto path = std::u16string_view(text_).substr(0, at_);
    if (const auto colon = path.substr(0, path.find(u'/')).find(u':'); colon != std::u16string_view::npos)
      refuse(colon, "what stands before ':' is no scheme");
  }

  void parseQuery() {
    if (at_ == text_.size() || text_[at_] != u'?')
      return;
    ++at_;
    pass(inQuery, "a query", [](char16_t unit) { return unit == u'#'; });
  }

  void parseFragment() {
    if (at_ == text_.size())
      return;
    ++at_;
    pass(inFragment, "a fragment", [](char16_t) { return false; });
  }

  /// Moves to the end of a component: the end of the text, or a unit where `ends` holds.
  template <class Ends>
  void pass(Allowed where, const char* component, Ends ends) {
    for (; at_ < text_.size(); ++at_) {
      const char16_t unit = text_[at_];
      if (isAllowedAscii(unit, where))
        continue;
      if (unit < 0x80 && ends(unit))
        return;
      if (unit == u'%')
        passEscape();
      else if (unit >= 0x80)
        passBeyondAscii(where, component);
      else
        refuseUnit(component);
    }
  }

  void passEscape() {
    const auto isHex = [this](std::size_t at) { return at < text_.size() && isAllowedAscii(text_[at], isHexDigit); };
    if (!isHex(at_ + 1) || !isHex(at_ + 2))
      refuse(at_, "two hexadecimal digits have to follow a '%'");
    at_ += 2;
    sawEscape_ = true;
  }

  void passBeyondAscii(Allowed where, const char* component) {
    const bool pair = fl::i18n::isPairAt(text_, at_);
    if (!isAllowedBeyondAscii(pair ? fl::i18n::pairAt(text_, at_) : char32_t{text_[at_]}, where))
      refuseUnit(component);
    at_ += pair ? 1 : 0;
    parts_.isAscii = false;
  }

  [[noreturn]] void refuseUnit(const char* component) const {
    constexpr char digits[] = "0123456789ABCDEF";
    const char16_t unit = text_[at_];
    std::string reason = "U+";
    for (int shift = 12; shift >= 0; shift -= 4)
      reason.push_back(digits[unit >> shift & 15]);
    if (unit > 0x20 && unit < 0x7F)
      reason.append(" '").append(1, static_cast<char>(unit)).append("'");
    refuse(at_, reason + " has to be escaped in " + component);
  }

  [[noreturn]] void refuse(std::size_t at, const std::string& reason) const {
    throw IRISyntaxException(text_, at, reason);
  }

  const std::u16string& text_;
  std::size_t at_ = 0;
  bool sawEscape_ = false;
  Parts parts_;
};

}  // namespace

Parts parse(const std::u16string& text) { return Parser(text).parse(); }

}  // namespace foundation::network::detail
