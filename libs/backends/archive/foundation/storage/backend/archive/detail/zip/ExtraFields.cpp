#include <foundation/storage/backend/archive/detail/zip/ExtraFields.h>

#include <foundation/storage/backend/archive/detail/zip/Records.h>

namespace foundation::storage::backend::archive::detail::zip {

std::optional<std::string_view> ExtraFields::takeField(std::string_view& rest) {
  if (rest.size() < headSize)
    return std::nullopt;
  const auto size = headSize + readNumber<std::uint16_t>(rest, 2);
  if (size > rest.size())
    return std::nullopt;
  const auto field = rest.substr(0, size);
  rest.remove_prefix(size);
  return field;
}

std::uint16_t ExtraFields::tagOf(std::string_view field) { return readNumber<std::uint16_t>(field, 0); }

std::optional<std::string_view> ExtraFields::find(std::uint16_t tag) const {
  auto rest = bytes_;
  while (const auto field = takeField(rest))
    if (tagOf(*field) == tag)
      return field->substr(headSize);
  return std::nullopt;
}

std::string extraField(std::uint16_t tag, std::string_view data) {
  std::string field;
  appendNumber(field, tag);
  appendNumber(field, static_cast<std::uint16_t>(data.size()));
  return field += data;
}

}  // namespace foundation::storage::backend::archive::detail::zip
