#include <foundation/storage/backend/s3/detail/wire/Signer.h>

#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::s3::detail::wire {

namespace {

/// Without blanks around it, and with runs of blanks as one.
std::string canonicalValue(std::string_view value) {
  std::string text;
  for (const char c : value)
    if ((c != ' ' && c != '\t') || (!text.empty() && text.back() != ' '))
      text += c == '\t' ? ' ' : c;
  if (text.ends_with(' '))
    text.pop_back();
  return text;
}

/// Headers as a signature covers them.
struct CanonicalHeaders {
  std::string lines;  ///< "name:value\n" each
  std::string names;  ///< "name;name"
};

CanonicalHeaders canonical(Headers headers) {
  // By the bytes of the names: one that another begins with goes first, as ';' and ':' take no part in it.
  std::stable_sort(headers.begin(), headers.end(),
                   [](const Header& left, const Header& right) { return left.name < right.name; });
  CanonicalHeaders result;
  const std::string* previous = nullptr;
  for (const auto& header : headers) {
    if (previous && *previous == header.name) {
      result.lines.back() = ',';
    } else {
      result.lines += header.name + ":";
      result.names += (previous ? ";" : "") + header.name;
    }
    result.lines += canonicalValue(header.value) + "\n";
    previous = &header.name;
  }
  return result;
}

std::string hexOf(const Sha256& digest) { return hex(bytesOf(digest)); }

}  // namespace

Signer::Signer(std::string region, std::string service) : region_(std::move(region)), service_(std::move(service)) {}

Headers Signer::sign(const Request& request, const Credentials& credentials, std::string_view payloadHash,
                     std::chrono::system_clock::time_point now) const {
  auto headers = request.headers;
  headers.push_back({"host", request.host});
  if (credentials.isAnonymous())
    return headers;
  const auto time = basicTime(now);
  headers.push_back({"x-amz-date", time});
  headers.push_back({"x-amz-content-sha256", std::string(payloadHash)});
  if (!credentials.sessionToken.empty())
    headers.push_back({"x-amz-security-token", credentials.sessionToken});

  const auto covered = canonical(headers);
  const auto canonicalRequest = request.method + "\n" + request.path + "\n" + encodeQuery(request.query) + "\n" +
                                covered.lines + "\n" + covered.names + "\n" + std::string(payloadHash);
  const auto day = basicDay(now);
  const auto scope = day + "/" + region_ + "/" + service_ + "/aws4_request";
  const auto text = "AWS4-HMAC-SHA256\n" + time + "\n" + scope + "\n" + hexOf(sha256(canonicalRequest));
  const auto key = dayKey(credentials.secretKey, day);
  headers.push_back({"authorization", "AWS4-HMAC-SHA256 Credential=" + credentials.accessKey + "/" + scope +
                                          ",SignedHeaders=" + covered.names +
                                          ",Signature=" + hexOf(hmacSha256(bytesOf(key), text))});
  return headers;
}

Sha256 Signer::dayKey(const std::string& secret, const std::string& day) const {
  const std::lock_guard lock(mutex_);
  if (lastKey_.day == day && lastKey_.secret == secret)
    return lastKey_.key;
  auto key = hmacSha256("AWS4" + secret, day);
  for (const std::string_view step :
       {std::string_view(region_), std::string_view(service_), std::string_view("aws4_request")})
    key = hmacSha256(bytesOf(key), step);
  lastKey_ = {secret, day, key};
  return key;
}

}  // namespace foundation::storage::backend::s3::detail::wire
