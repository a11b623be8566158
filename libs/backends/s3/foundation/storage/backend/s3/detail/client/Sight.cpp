#include <foundation/storage/backend/s3/detail/client/Sight.h>

#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>
#include <foundation/storage/backend/s3/detail/wire/Timestamp.h>

namespace foundation::storage::backend::s3::detail::client {

bool Sight::canBeAsYoungAs(std::chrono::steady_clock::duration age) const {
  if (seen.is_special() || object.lastModified.is_special())
    return true;
  constexpr std::chrono::seconds rounding{2};
  const auto most = std::chrono::ceil<std::chrono::seconds>(age) + rounding;
  return (seen - object.lastModified).total_seconds() <= most.count();
}

std::optional<Sight> look(Exchange& exchange, const std::string& bucket, const std::string& key,
                          http::Interrupt& interrupt) {
  const auto answer = exchange
                          .send({.operation = "HeadObject",
                                 .method = "HEAD",
                                 .bucket = bucket,
                                 .key = key,
                                 .alsoTaken = {404},
                                 .check = [](const http::HttpAnswer& found) { lengthOf(found.headers); }},
                                interrupt)
                          .answer;
  if (answer.status == 404)
    return std::nullopt;
  Sight sight{objectInfoOf(answer.headers), {}};
  sight.object.size = lengthOf(answer.headers);
  if (const auto* const date = wire::findHeader(answer.headers, "date"))
    sight.seen = wire::parseHttpTime(*date);
  return sight;
}

}  // namespace foundation::storage::backend::s3::detail::client
