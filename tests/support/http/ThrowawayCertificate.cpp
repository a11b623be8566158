#include "support/http/ThrowawayCertificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace foundation::storage::testing::http {
namespace {

template <class Object, class Free>
std::shared_ptr<Object> owned(Object* object, Free* free) {
  if (object == nullptr)
    throw std::runtime_error("OpenSSL refuses to make a certificate");
  return {object, free};
}

void require(bool succeeded, const char* what) {
  if (!succeeded)
    throw std::runtime_error(std::string("no certificate: ") + what);
}

std::shared_ptr<X509> selfSigned(EVP_PKEY* key, const std::string& names) {
  auto certificate = owned(X509_new(), X509_free);
  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  constexpr long hour = 3600;
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -hour);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 23 * hour);
  X509_set_pubkey(certificate.get(), key);
  auto* name = X509_get_subject_name(certificate.get());
  const unsigned char commonName[] = "throwaway";
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, commonName, -1, -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  const auto extension =
      owned(X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, names.c_str()), X509_EXTENSION_free);
  X509_add_ext(certificate.get(), extension.get(), -1);
  require(X509_sign(certificate.get(), key, EVP_sha256()) > 0, "it cannot be signed");
  return certificate;
}

std::string writeToFile(X509* certificate) {
  std::string path = "/tmp/throwaway-certificate-XXXXXX";
  const int descriptor = ::mkstemp(path.data());
  require(descriptor >= 0, "its file cannot be made");
  const std::shared_ptr<std::FILE> file(::fdopen(descriptor, "w"), std::fclose);
  require(PEM_write_X509(file.get(), certificate) == 1, "its file cannot be written");
  return path;
}

}  // namespace

ThrowawayCertificate::ThrowawayCertificate(const std::string& names)
    : context_(owned(SSL_CTX_new(TLS_server_method()), SSL_CTX_free)) {
  const auto key = owned(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"), EVP_PKEY_free);
  const auto certificate = selfSigned(key.get(), names);
  require(SSL_CTX_use_certificate(context_.get(), certificate.get()) == 1, "it cannot be used");
  require(SSL_CTX_use_PrivateKey(context_.get(), key.get()) == 1, "its key cannot be used");
  file_ = writeToFile(certificate.get());
}

ThrowawayCertificate::~ThrowawayCertificate() { ::unlink(file_.c_str()); }

}  // namespace foundation::storage::testing::http
