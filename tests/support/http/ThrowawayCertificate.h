#pragma once

#include <memory>
#include <string>

struct ssl_ctx_st;

namespace foundation::storage::testing::http {

/// A key and a certificate that it signs itself, made anew and valid for a day. The certificate lies in a file for as
/// long as this object lives.
class ThrowawayCertificate {
 public:
  /// @param names  whom it is for, as OpenSSL writes a subjectAltName
  explicit ThrowawayCertificate(const std::string& names = "IP:127.0.0.1,DNS:localhost");
  ~ThrowawayCertificate();
  ThrowawayCertificate(const ThrowawayCertificate&) = delete;
  ThrowawayCertificate& operator=(const ThrowawayCertificate&) = delete;

  /// The certificate in PEM, for whoever is to trust it.
  const std::string& file() const { return file_; }
  /// For servers; can be shared by any number of connections.
  ssl_ctx_st* context() const { return context_.get(); }

 private:
  std::shared_ptr<ssl_ctx_st> context_;
  std::string file_;
};

}  // namespace foundation::storage::testing::http
