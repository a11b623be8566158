#include <foundation/storage/backend/s3/detail/http/Connection.h>

#include <mutex>
#include <new>
#include <stdexcept>

namespace foundation::storage::backend::s3::detail::http {

namespace {

/// Is never undone: other parts of the program may use libcurl too, until its very end, and cannot be asked.
void initialiseLibrary() {
  static std::once_flag isDone;
  std::call_once(isDone, [] {
    if (const auto code = curl_global_init(CURL_GLOBAL_DEFAULT); code != CURLE_OK)
      throw std::runtime_error(std::string("libcurl cannot be used: ") + curl_easy_strerror(code));
  });
}

template <class Handle>
Handle requireHandle(typename Handle::pointer made) {
  if (!made)
    throw std::bad_alloc();
  return Handle(made);
}

MultiHandle makeMulti() {
  initialiseLibrary();
  auto multi = requireHandle<MultiHandle>(curl_multi_init());
  curl_multi_setopt(multi.get(), CURLMOPT_MAXCONNECTS, 1L);
  return multi;
}

}  // namespace

Connection::Connection(std::string_view origin)
    : origin_(origin), multi_(makeMulti()), easy_(requireHandle<EasyHandle>(curl_easy_init())) {}

std::string_view originOf(std::string_view url) {
  const auto scheme = url.find("://");
  return url.substr(0, url.find_first_of("/?#", scheme == std::string_view::npos ? 0 : scheme + 3));
}

}  // namespace foundation::storage::backend::s3::detail::http
