#include <foundation/storage/backend/archive/detail/EntryName.h>

#include <fl/i18n/Convert.h>

namespace foundation::storage::backend::archive::detail {

std::optional<Names> parseEntryName(std::string_view name) {
  if (name.starts_with('/') || name.find('\0') != name.npos)
    return std::nullopt;
  Names names;
  while (!name.empty()) {
    const auto end = name.find('/');
    const auto part = name.substr(0, end);
    name.remove_prefix(end == name.npos ? name.size() : end + 1);
    if (part == ".." || names.size() == deepest)
      return std::nullopt;
    if (!part.empty() && part != ".")
      names.push_back(fl::i18n::to_ustring(part));
  }
  if (names.empty())
    return std::nullopt;
  return names;
}

std::string formatEntryName(const Names& names) {
  std::string bytes;
  for (const auto& name : names) {
    if (!bytes.empty())
      bytes += '/';
    fl::i18n::append_string(bytes, name);
  }
  return bytes;
}

bool isStorable(std::u16string_view name) {
  return name.find(u'\0') == name.npos && fl::i18n::to_ustring(fl::i18n::to_string(name)) == name;
}

bool isUtf8(std::string_view bytes) {
  const auto text = fl::i18n::to_ustring(bytes);
  char16_t before = 0;
  for (const auto unit : text) {
    const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
    const bool followsHigh = before >= 0xD800 && before <= 0xDBFF;
    if (isLow && !followsHigh)
      return false;
    before = unit;
  }
  return true;
}

}  // namespace foundation::storage::backend::archive::detail
