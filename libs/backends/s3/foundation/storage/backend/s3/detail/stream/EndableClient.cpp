#include <foundation/storage/backend/s3/detail/stream/EndableClient.h>

namespace foundation::storage::backend::s3::detail::stream {

namespace {

std::shared_ptr<http::Interrupt> interruptBelow(http::Interrupt& above) {
  if (!above.hasQuestion())
    return std::make_shared<http::Interrupt>();
  return std::make_shared<http::Interrupt>([&above] { return above.isRaised(); });
}

}  // namespace

EndableClient::EndableClient(const client::Client& origin)
    : origin_(origin),
      interrupt_(interruptBelow(origin_.interrupt())),
      client_(origin_.endingWith(interrupt_)),
      listener_(origin_.interrupt(), [this] { interrupt_->raise(); }) {}

}  // namespace foundation::storage::backend::s3::detail::stream
