#include <foundation/storage/backend/s3/detail/client/Endpoint.h>

#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>
#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

namespace foundation::storage::backend::s3::detail::client {

namespace {

constexpr std::size_t longestKey = 1024;  // docs.aws.amazon.com, "Object key naming"

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isLetter(char c) { return isLower(c) || (c >= 'A' && c <= 'Z'); }

std::string lowered(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return result;
}

StoreFailure refused(const std::string& reason) { return {provider::ErrorCode::InvalidLocation, reason}; }

StoreFailure malformed(std::string_view text) {
  const auto user = text.rfind('@');  // perhaps with a password, which nobody is to read
  const auto shown = user == std::string_view::npos ? std::string(text) : "..." + std::string(text.substr(user));
  return refused("\"" + shown +
                 "\" is no endpoint of an object store: give it as https://HOST or http://HOST:PORT, and nothing else");
}

/// Takes `prefix` off the beginning of `text`, whatever its case.
bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (lowered(text.substr(0, prefix.size())) != prefix)
    return false;
  text.remove_prefix(prefix.size());
  return true;
}

/// Where the port's ':' stands, or the end of the text.
std::size_t endOfHost(std::string_view text) {
  const auto bracket = text.find(']');
  const auto colon = text.find(':', bracket == std::string_view::npos ? 0 : bracket);
  return std::min(colon, text.size());
}

bool isIpv6(std::string_view host) {
  return host.size() > 4 && host.front() == '[' && host.back() == ']' &&
         host.find_first_not_of("0123456789abcdefABCDEF:.", 1) == host.size() - 1;
}
bool isIpv4(std::string_view host) { return host.find_first_not_of("0123456789.") == std::string_view::npos; }
bool isName(std::string_view host) {
  return !host.empty() && std::all_of(host.begin(), host.end(), [](char c) {
    return isLetter(c) || isDigit(c) || c == '-' || c == '.' || c == '_';
  });
}

std::optional<std::uint16_t> parsePort(std::string_view digits) {
  std::uint16_t port = 0;
  const auto* const end = digits.data() + digits.size();
  const auto [last, error] = std::from_chars(digits.data(), end, port);
  return error == std::errc() && last == end && port != 0 ? std::optional(port) : std::nullopt;
}

void requireBucket(const std::string& bucket) {
  if (bucket.empty() || bucket == "." || bucket == ".." || bucket.find('/') != std::string::npos)
    throw refused("\"" + bucket + "\" is no name of a bucket");
}

void requireKey(const std::string& key) {
  if (key.size() > longestKey)
    throw refused("The name is " + std::to_string(key.size()) + " bytes long; object stores take " +
                  std::to_string(longestKey));
}

}  // namespace

Endpoint::Endpoint(std::string_view text, Addressing addressing) : addressing_(addressing) {
  auto rest = text;
  const auto isSecure = takePrefix(rest, "https://");
  if (!isSecure && !takePrefix(rest, "http://"))
    throw malformed(text);
  scheme_ = isSecure ? "https://" : "http://";
  if (!rest.empty() && rest.back() == '/')
    rest.remove_suffix(1);
  const auto end = endOfHost(rest);
  const auto host = rest.substr(0, end);
  if (!isName(host) && !isIpv6(host))
    throw malformed(text);
  host_ = host;
  isAddress_ = isIpv6(host) || isIpv4(host);
  if (end == rest.size())
    return;
  const auto port = parsePort(rest.substr(end + 1));
  if (!port)
    throw malformed(text);
  if (*port != (isSecure ? 443 : 80))
    host_ += ":" + std::to_string(*port);
}

Endpoint::Place Endpoint::place(const std::string& bucket, const std::string& key) const {
  requireBucket(bucket);
  requireKey(key);
  const auto encoded = wire::encodePath(key);
  if (goesIntoHost(bucket)) {
    const auto host = bucket + "." + host_;
    return {scheme_ + host, host, "/" + encoded};
  }
  return {scheme_ + host_, host_, "/" + wire::encode(bucket) + (key.empty() ? "" : "/" + encoded)};
}

bool Endpoint::goesIntoHost(const std::string& bucket) const {
  const auto fits = [](char c) { return isLower(c) || isDigit(c) || c == '-' || c == '.'; };
  const auto hasDots = bucket.find('.') != std::string::npos;
  return addressing_ == Addressing::VirtualHost && !isAddress_ && !(hasDots && scheme_ == "https://") &&
         bucket.size() <= 63 && std::all_of(bucket.begin(), bucket.end(), fits);
}

}  // namespace foundation::storage::backend::s3::detail::client
