// The least that the work can cost: one pass over a text that is kept as it is.

#include "locations/Workloads.h"

#include <fl/i18n/Convert.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace bench {
namespace {

constexpr auto isAllowed = [] {
  std::array<bool, 128> table{};
  for (const char c :
       std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~!$&'()*+,;=:@/%?#"))
    table[static_cast<std::size_t>(c)] = true;
  return table;
}();

/// A text with the offsets of its path and its name.
struct Kept {
  std::u16string text;
  std::size_t path = 0;
  std::size_t name = 0;
};

std::size_t decodedLength(std::u16string_view written) {
  const auto digit = [](char16_t c) { return c <= u'9' ? c - u'0' : (c | 0x20) - u'a' + 10; };
  std::u16string out;
  out.reserve(written.size());
  for (std::size_t i = 0; i < written.size(); ++i) {
    if (written[i] != u'%') {
      out.push_back(written[i]);
    } else {
      out.push_back(static_cast<char16_t>(digit(written[i + 1]) << 4 | digit(written[i + 2])));
      i += 2;
    }
  }
  benchmark::DoNotOptimize(out.data());
  return out.size();
}

struct Limit {
  static std::u16string text(const Spelling& spelling) { return fl::i18n::to_ustring(spelling.shown); }
  static std::u16string name(const std::string& name) { return fl::i18n::to_ustring(name); }

  static Kept parse(const std::u16string& text) {
    Kept kept{text};
    std::size_t slashes = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] < 128 && !isAllowed[text[i]])
        throw std::runtime_error("refused");
      if (text[i] == u'/') {
        kept.path = ++slashes == 3 ? i : kept.path;
        kept.name = i + 1;
      }
    }
    return kept;
  }

  static std::size_t read(const Kept& value) {
    const std::u16string_view text = value.text;
    return decodedLength(text.substr(value.path)) + decodedLength(text.substr(value.name));
  }

  static Kept folder() { return parse(fl::i18n::to_ustring(folderText)); }

  static Kept child(const Kept& folder, const std::u16string& name) {
    constexpr char16_t hex[] = u"0123456789ABCDEF";
    Kept kept{{}, folder.path, folder.text.size() + 1};
    kept.text.reserve(folder.text.size() + 1 + name.size());
    kept.text.append(folder.text).push_back(u'/');
    for (const char16_t c : name) {
      if (c >= 128 || (isAllowed[c] && c != u'%' && c != u'#' && c != u'?'))
        kept.text.push_back(c);
      else
        kept.text.append({u'%', hex[c >> 4], hex[c & 15]});
    }
    return kept;
  }

  static bool equal(const Kept& a, const Kept& b) {
    return a.text.size() == b.text.size() && std::memcmp(a.text.data(), b.text.data(), 2 * a.text.size()) == 0;
  }
  static std::size_t hash(const Kept& value) { return std::hash<std::u16string>()(value.text); }
  static bool less(const Kept& a, const Kept& b) { return a.text < b.text; }
};

const bool added = add<Limit>("limit");

}  // namespace
}  // namespace bench
