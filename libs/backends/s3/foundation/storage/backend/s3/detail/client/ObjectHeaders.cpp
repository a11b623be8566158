#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>

#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr std::array<std::string_view, 6> keptNames{"content-type",     "cache-control",    "content-disposition",
                                                    "content-encoding", "content-language", "expires"};
constexpr std::string_view metadataPrefix = "x-amz-meta-";

bool isKept(const std::string& name) {
  return std::find(keptNames.begin(), keptNames.end(), name) != keptNames.end() ||
         name.compare(0, metadataPrefix.size(), metadataPrefix) == 0;
}

std::string_view valueOf(const wire::Headers& headers, std::string_view name) {
  const auto* const value = wire::findHeader(headers, name);
  return value ? std::string_view(*value) : std::string_view();
}

}  // namespace

std::optional<std::uint64_t> parseNumber(std::string_view digits) {
  std::uint64_t number = 0;
  const auto* const end = digits.data() + digits.size();
  const auto [last, error] = std::from_chars(digits.data(), end, number);
  return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

ObjectInfo objectInfoOf(const wire::Headers& headers) {
  ObjectInfo info;
  info.lastModified = wire::parseHttpTime(valueOf(headers, "last-modified"));
  info.eTag = eTagOf(headers);
  info.isETagOpaque = isETagOpaque(headers);
  info.md5 = md5Of(headers);
  std::copy_if(headers.begin(), headers.end(), std::back_inserter(info.kept),
               [](const wire::Header& header) { return isKept(header.name); });
  return info;
}

std::uint64_t lengthOf(const wire::Headers& headers) {
  const auto length = parseNumber(valueOf(headers, "content-length"));
  if (!length)
    throw BadAnswer("The answer does not tell the size of the object");
  return *length;
}

std::string eTagOf(const wire::Headers& headers) { return std::string(wire::unquoted(valueOf(headers, "etag"))); }

bool isETagOpaque(const wire::Headers& headers) {
  return valueOf(headers, "x-amz-server-side-encryption").substr(0, 7) == "aws:kms" ||
         wire::findHeader(headers, "x-amz-server-side-encryption-customer-algorithm") != nullptr;
}

std::optional<wire::Md5> md5Of(const wire::Headers& headers) {
  return isETagOpaque(headers) ? std::nullopt : wire::md5OfETag(valueOf(headers, "etag"));
}

std::string formatRange(const Range& range) {
  return "bytes=" + std::to_string(range.offset) + "-" + std::to_string(range.offset + range.size - 1);
}

std::optional<ContentRange> parseContentRange(std::string_view text) {
  constexpr std::string_view unit = "bytes ";
  const auto dash = text.find('-');
  const auto slash = text.find('/');
  if (text.substr(0, unit.size()) != unit || dash == std::string_view::npos || slash == std::string_view::npos ||
      dash < unit.size() || slash < dash)
    return std::nullopt;
  const auto first = parseNumber(text.substr(unit.size(), dash - unit.size()));
  const auto last = parseNumber(text.substr(dash + 1, slash - dash - 1));
  const auto total = parseNumber(text.substr(slash + 1));
  if (!first || !last || !total || *last < *first || *last >= *total)
    return std::nullopt;
  return ContentRange{*first, *last, *total};
}

}  // namespace foundation::storage::backend::s3::detail::client
