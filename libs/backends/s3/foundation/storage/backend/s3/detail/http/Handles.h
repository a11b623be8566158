#pragma once

#include <curl/curl.h>

#include <memory>

namespace foundation::storage::backend::s3::detail::http {

struct FreeEasy {
  void operator()(CURL* easy) const noexcept { curl_easy_cleanup(easy); }
};
struct FreeMulti {
  void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
};
struct FreeLines {
  void operator()(curl_slist* lines) const noexcept { curl_slist_free_all(lines); }
};

/// libcurl's own objects.
using EasyHandle = std::unique_ptr<CURL, FreeEasy>;
using MultiHandle = std::unique_ptr<CURLM, FreeMulti>;
using LinesHandle = std::unique_ptr<curl_slist, FreeLines>;

}  // namespace foundation::storage::backend::s3::detail::http
