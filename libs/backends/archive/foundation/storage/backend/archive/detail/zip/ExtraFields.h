#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::backend::archive::detail::zip {

/// The extra fields of a header, one after the other: each a tag, a size and data. What comes after a field that
/// claims more than there is is no field.
class ExtraFields {
 public:
  explicit ExtraFields(std::string_view bytes) : bytes_(bytes) {}

  /// The data of the first field with that tag.
  std::optional<std::string_view> find(std::uint16_t tag) const;

  /// All fields but those with the tags, and without what is no field.
  template <class... Tags>
  std::string without(Tags... tags) const {
    std::string kept;
    visit([&](std::uint16_t tag, std::string_view whole) {
      if (((tag != tags) && ...))
        kept += whole;
    });
    return kept;
  }

 private:
  static constexpr std::size_t headSize = 4;

  /// Removes the first field from `rest`, and gives it as a whole; nothing at the end.
  static std::optional<std::string_view> takeField(std::string_view& rest);
  static std::uint16_t tagOf(std::string_view field);

  template <class Visit>
  void visit(const Visit& visitField) const {
    auto rest = bytes_;
    while (const auto field = takeField(rest))
      visitField(tagOf(*field), *field);
  }

  std::string_view bytes_;
};

/// A field as it is stored.
std::string extraField(std::uint16_t tag, std::string_view data);

}  // namespace foundation::storage::backend::archive::detail::zip
