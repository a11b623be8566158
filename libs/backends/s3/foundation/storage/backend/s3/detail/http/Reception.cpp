#include <foundation/storage/backend/s3/detail/http/Reception.h>

#include <foundation/storage/backend/s3/detail/http/Outcome.h>

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/trim.hpp>

#include <algorithm>
#include <charconv>
#include <locale>
#include <utility>

namespace foundation::storage::backend::s3::detail::http {

namespace {

/// In bytes; stores send a few hundred, and some KiB of what users store with an object.
constexpr std::size_t longestHeader = std::size_t{256} * 1024;
/// In bytes: as much as is made room for only because a header says that it comes.
constexpr std::uint64_t mostReserved = std::uint64_t{64} * 1024 * 1024;

std::string trimmed(std::string_view text) {
  return boost::algorithm::trim_copy(std::string(text), std::locale::classic());
}

}  // namespace

void Reception::addLine(std::string_view line) {
  headerSize_ += line.size();
  if (headerSize_ > longestHeader)
    throw broken("the header of the answer is longer than " + std::to_string(longestHeader) + " bytes");
  if (line.starts_with("HTTP/"))
    return answer_.headers.clear();  // those before were of an interim answer
  const auto colon = line.find(':');
  const auto isTrailer = !answer_.body.empty();
  if (isTrailer || colon == std::string_view::npos)
    return;
  answer_.headers.push_back({boost::algorithm::to_lower_copy(trimmed(line.substr(0, colon)), std::locale::classic()),
                             trimmed(line.substr(colon + 1))});
}

void Reception::addBody(std::string_view bytes) {
  auto& body = answer_.body;
  if (bytes.size() > request_.longestAnswer - body.size())
    throw broken("the answer is longer than " + std::to_string(request_.longestAnswer) + " bytes");
  if (body.empty())
    body.reserve(std::min({announced(0).value_or(0), mostReserved, request_.longestAnswer}));
  body.append(bytes);
}

HttpAnswer Reception::finish(int status) {
  const auto size = announced(status);
  if (size && *size != answer_.body.size())
    throw broken("of the answer's " + std::to_string(*size) + " bytes, " + std::to_string(answer_.body.size()) +
                 " have come");
  answer_.status = status;
  return std::move(answer_);
}

std::optional<std::uint64_t> Reception::announced(int status) const {
  const auto* const length = wire::findHeader(answer_.headers, "content-length");
  const auto hasBody = request_.method != "HEAD" && status != 204 && status != 304;
  if (!length || !hasBody || wire::findHeader(answer_.headers, "transfer-encoding"))
    return std::nullopt;
  std::uint64_t size = 0;
  const auto* const end = length->data() + length->size();
  const auto [parsed, error] = std::from_chars(length->data(), end, size);
  if (error != std::errc() || parsed != end)
    throw broken("the answer's length is no number: " + *length);
  return size;
}

TransportFailure Reception::broken(const std::string& detail) const {
  return failureOf({CURLE_WEIRD_SERVER_REPLY, origin_, detail, true});
}

}  // namespace foundation::storage::backend::s3::detail::http
