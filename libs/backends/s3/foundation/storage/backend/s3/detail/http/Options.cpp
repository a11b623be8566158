#include <foundation/storage/backend/s3/detail/http/Options.h>

#include <array>

namespace foundation::storage::backend::s3::detail::http {

namespace {

/// In bytes; larger than libcurl's own, so that large bodies take fewer turns.
constexpr long bufferSize = 256L * 1024;

void setTrustOptions(CURL* easy, const HttpSettings& settings) {
  setOption(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  setOption(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  setOption(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  if (settings.caFile.empty())
    return;
  setOption(easy, CURLOPT_CAINFO, settings.caFile.c_str());
  // Else the system's folder of certificates would be trusted beside the file.
  setOption(easy, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
}

void setMethodOptions(CURL* easy, const HttpRequest& request) {
  if (request.method == "HEAD")
    return setOption(easy, CURLOPT_NOBODY, 1L);
  const auto takesBody = request.method == "PUT" || request.method == "POST" || !request.body.empty();
  if (takesBody) {
    // Right from the caller's memory, so that a body needs no rewinding. One of no bytes, too, has its length told.
    setOption(easy, CURLOPT_POSTFIELDS, request.body.empty() ? "" : request.body.data());
    setOption(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
  }
  if (request.method != "GET")
    setOption(easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
}

void addLine(LinesHandle& lines, const std::string& line) {
  const auto first = curl_slist_append(lines.get(), line.c_str());
  if (!first)
    throw std::bad_alloc();
  static_cast<void>(lines.release());
  lines.reset(first);
}

std::string lineOf(const wire::Header& header) {
  if ((header.name + header.value).find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
    throw TransportFailure(TransportFailure::Kind::Misconfigured, false,
                           "the value of the header \"" + header.name + "\" contains a line break");
  // An empty value takes a semicolon: libcurl would read a colon as "leave that header out".
  return header.value.empty() ? header.name + ";" : header.name + ": " + header.value;
}

LinesHandle linesOf(const HttpRequest& request) {
  LinesHandle lines;
  for (const auto& header : request.headers)
    addLine(lines, lineOf(header));
  // What libcurl would add of itself. A store that refuses a body says so while it is being sent, and libcurl stops
  // then; to ask before ("expect") would cost each large part a round trip, and a second where stores do not know it.
  for (const auto* own : {"accept", "content-type", "expect", "user-agent"})
    if (!wire::findHeader(request.headers, own))
      addLine(lines, std::string(own) + ":");
  return lines;
}

}  // namespace

void setConnectionOptions(CURL* easy, const HttpSettings& settings) {
  setOption(easy, CURLOPT_NOSIGNAL, 1L);
  setOption(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  setOption(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  setOption(easy, CURLOPT_TCP_NODELAY, 1L);
  setOption(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(settings.connectTimeout.count()));
  // Does not wait for the resolver's thread when a transfer is given up, but leaves it to end by itself.
  setOption(easy, CURLOPT_QUICK_EXIT, 1L);
  setOption(easy, CURLOPT_BUFFERSIZE, bufferSize);
  setOption(easy, CURLOPT_UPLOAD_BUFFERSIZE, bufferSize);
  setTrustOptions(easy, settings);
}

LinesHandle setRequestOptions(CURL* easy, const HttpRequest& request) {
  setOption(easy, CURLOPT_URL, request.url.c_str());
  setOption(easy, CURLOPT_PATH_AS_IS, 1L);
  setOption(easy, CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
  setOption(easy, CURLOPT_FOLLOWLOCATION, 0L);
  setOption(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  setMethodOptions(easy, request);
  auto lines = linesOf(request);
  setOption(easy, CURLOPT_HTTPHEADER, lines.get());
  return lines;
}

}  // namespace foundation::storage::backend::s3::detail::http
