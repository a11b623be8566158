#include <foundation/storage/backend/s3/detail/client/Client.h>

#include <foundation/storage/backend/s3/detail/client/Exchange.h>

#include <utility>

namespace foundation::storage::backend::s3::detail::client {

Client::Client(const Settings& settings, std::string bucket)
    : exchange_(std::make_shared<Exchange>(settings)),
      bucket_(std::move(bucket)),
      interrupt_(std::make_shared<http::Interrupt>()) {}

Client::Client(const Client&) = default;
Client& Client::operator=(const Client&) = default;
Client::~Client() = default;

const Settings& Client::settings() const { return exchange_->settings(); }

Conditions Client::conditions() const { return exchange_->learnt().creation; }

Client Client::endingWith(std::shared_ptr<http::Interrupt> interrupt) const {
  auto client = *this;
  client.interrupt_ = std::move(interrupt);
  return client;
}

Client Client::withBucket(std::string bucket) const {
  auto client = *this;
  client.bucket_ = std::move(bucket);
  return client;
}

}  // namespace foundation::storage::backend::s3::detail::client
