#pragma once

#include <foundation/storage/backend/s3/detail/http/Handles.h>
#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <new>
#include <stdexcept>
#include <string>

namespace foundation::storage::backend::s3::detail::http {

/// Sets an option of libcurl's, which it must know.
template <class Value>
void setOption(CURL* easy, CURLoption option, Value value) {
  const auto code = curl_easy_setopt(easy, option, value);
  if (code == CURLE_OUT_OF_MEMORY)
    throw std::bad_alloc();
  if (code != CURLE_OK)
    throw TransportFailure(TransportFailure::Kind::Misconfigured, false,
                           std::string("this libcurl does not do what is asked of it: ") + curl_easy_strerror(code));
}

/// How to connect, and whom to trust.
void setConnectionOptions(CURL* easy, const HttpSettings& settings);

/// What to send. The request must outlive the transfer.
/// @return the lines of its header, which must outlive it, too
LinesHandle setRequestOptions(CURL* easy, const HttpRequest& request);

}  // namespace foundation::storage::backend::s3::detail::http
