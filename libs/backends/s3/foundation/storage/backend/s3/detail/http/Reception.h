#pragma once

#include <foundation/storage/backend/s3/detail/http/HttpClient.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::http {

/// An answer while it comes in. Throws `TransportFailure` for one that is none, or longer than it may be.
class Reception {
 public:
  /// @param origin  where it comes from, for failures; outlives this, as the request does
  Reception(const std::string& origin, const HttpRequest& request) : origin_(origin), request_(request) {}

  /// A line of a header, with its end; that of the status begins another one.
  void addLine(std::string_view line);
  void addBody(std::string_view bytes);
  /// The whole of it.
  HttpAnswer finish(int status);

 private:
  /// What the header says of the body's length, where that is what is to come.
  std::optional<std::uint64_t> announced(int status) const;
  TransportFailure broken(const std::string& detail) const;

  const std::string& origin_;
  const HttpRequest& request_;
  HttpAnswer answer_;
  std::size_t headerSize_ = 0;  ///< in bytes, of all headers
};

}  // namespace foundation::storage::backend::s3::detail::http
