#include <fstore/Capacity.h>
#include <fstore/JsonArray.h>
#include <fstore/Refusal.h>
#include <fstore/Size.h>
#include <fstore/Text.h>

#include <fl/i18n/Convert.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <optional>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;
using provider::StorageItem;

namespace {

constexpr std::size_t width = 16;

struct Capacity {
  std::optional<std::uint64_t> whole;  ///< none: boundless; and so is what is free
  std::uint64_t occupied;

  std::optional<std::uint64_t> free() const {
    return whole ? std::optional(*whole - std::min(*whole, occupied)) : std::nullopt;
  }
};

Capacity capacityOf(const StorageItem& item) {
  try {
    const auto info = item.getProviderStorageInfo();
    const auto whole = info.getStorageCapacity();
    const bool isBoundless = whole == std::numeric_limits<std::uint64_t>::max();
    return {isBoundless ? std::nullopt : std::optional(whole), info.getSpaceOccupied()};
  } catch (const provider::Exception& failure) {
    if (failure.getErrorCode() != ErrorCode::UnsupportedOperation)
      throw;
    throw refusal(ErrorCode::UnsupportedOperation, item.getLocation(), u"The store does not tell how big it is");
  }
}

std::string column(const std::optional<std::uint64_t>& size, SizeStyle style) {
  const auto text = !size ? "-" : style == SizeStyle::Short ? shortSize(*size) : std::to_string(*size);
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string lineOf(const Capacity& capacity, SizeStyle style, const StorageItem& item) {
  return column(capacity.whole, style) + " " + column(capacity.occupied, style) + " " + column(capacity.free(), style) +
         " " + printable(item.getLocation().toString()) + "\n";
}

nlohmann::ordered_json number(const std::optional<std::uint64_t>& size) {
  return size ? nlohmann::ordered_json(*size) : nlohmann::ordered_json(nullptr);
}

}  // namespace

void printCapacity(const Session& session, const std::vector<std::string>& arguments, SizeStyle style, Format format) {
  JsonArray json(session.output, format);
  if (!json.isWritten())
    session.output.write("        Capacity         Occupied             Free Location\n");
  session.forEach(arguments, [&](const StorageItem& item, const std::string&) {
    const auto capacity = capacityOf(item);
    if (!json.isWritten())
      return session.output.write(lineOf(capacity, style, item));
    json.add({{"location", fl::i18n::to_string(item.getLocation().toString())},
              {"capacity", number(capacity.whole)},
              {"occupied", capacity.occupied},
              {"free", number(capacity.free())}});
  });
  json.end();
}

}  // namespace fstore
