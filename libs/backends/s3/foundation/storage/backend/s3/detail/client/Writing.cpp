#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/client/Creation.h>
#include <foundation/storage/backend/s3/detail/client/Exchange.h>
#include <foundation/storage/backend/s3/detail/client/Integrity.h>
#include <foundation/storage/backend/s3/detail/client/ObjectHeaders.h>

namespace foundation::storage::backend::s3::detail::client {

std::string Client::put(const std::string& key, std::string_view body, Existing existing,
                        const wire::Headers& kept) const {
  const auto md5 = wire::md5(body);
  Call call{.operation = "PutObject",
            .method = "PUT",
            .bucket = bucket_,
            .key = key,
            .headers = kept,
            .body = body,
            .check = [&md5](const http::HttpAnswer& answer) { requireStored(answer, md5); }};
  call.headers.push_back(md5Header(md5));
  if (existing == Existing::Refuse)
    return Creation(*exchange_, std::move(call), md5, *interrupt_).run();
  return eTagOf(exchange_->send(call, *interrupt_).answer.headers);
}

}  // namespace foundation::storage::backend::s3::detail::client
