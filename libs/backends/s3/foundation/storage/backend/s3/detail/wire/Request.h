#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Requests and answers of the S3 protocol as texts: encoding, signing, documents.
namespace foundation::storage::backend::s3::detail::wire {

/// One header field.
struct Header {
  std::string name;  ///< in lower case
  std::string value;
};
using Headers = std::vector<Header>;

/// The value of the first header of that name; null where there is none.
/// @param name  in lower case
const std::string* findHeader(const Headers& headers, std::string_view name);

/// One parameter of a query.
struct Parameter {
  std::string name;   ///< not encoded
  std::string value;  ///< not encoded; may be empty, as in "?uploads="
};

/// A query as it is sent and signed: encoded, in the order of the encoded names, then values; without the '?'.
std::string encodeQuery(const std::vector<Parameter>& query);

/// A request, not signed yet.
struct Request {
  std::string method;  ///< in upper case
  std::string host;    ///< with the port, unless that is the scheme's own; as the "Host" header gives it
  std::string path;    ///< encoded, begins with '/'
  std::vector<Parameter> query = {};
  Headers headers = {};        ///< without those that signing adds
  std::string_view body = {};  ///< the caller keeps it alive
};

}  // namespace foundation::storage::backend::s3::detail::wire
