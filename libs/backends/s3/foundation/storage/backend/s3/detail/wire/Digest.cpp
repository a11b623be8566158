#include <foundation/storage/backend/s3/detail/wire/Digest.h>

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <stdexcept>

namespace foundation::storage::backend::s3::detail::wire {

namespace {

const unsigned char* dataOf(std::string_view bytes) { return reinterpret_cast<const unsigned char*>(bytes.data()); }

/// @param what  the digest that failed: a system may forbid MD5, say
void require(bool success, const char* what) {
  if (!success)
    throw std::runtime_error(std::string("OpenSSL cannot compute ") + what);
}

template <class Digest>
Digest digestOf(std::string_view bytes, const EVP_MD* kind, const char* name) {
  Digest digest;
  require(EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, kind, nullptr) == 1, name);
  return digest;
}

}  // namespace

Sha256 sha256(std::string_view bytes) { return digestOf<Sha256>(bytes, EVP_sha256(), "SHA-256"); }

Md5 md5(std::string_view bytes) { return digestOf<Md5>(bytes, EVP_md5(), "MD5"); }

Sha256 hmacSha256(std::string_view key, std::string_view text) {
  Sha256 digest;
  const auto* made =
      HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), dataOf(text), text.size(), digest.data(), nullptr);
  require(made != nullptr, "HMAC-SHA-256");
  return digest;
}

std::string hex(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += {digits[byte >> 4U], digits[byte & 0xFU]};
  }
  return text;
}

std::string base64(std::string_view bytes) {
  // One more for the NUL that OpenSSL appends.
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
  EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), dataOf(bytes), static_cast<int>(bytes.size()));
  text.pop_back();
  return text;
}

struct Md5Hasher::State {
  struct Free {
    void operator()(EVP_MD_CTX* owned) const { EVP_MD_CTX_free(owned); }
  };
  std::unique_ptr<EVP_MD_CTX, Free> context{EVP_MD_CTX_new()};

  State() { begin(); }
  void begin() { require(context && EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) == 1, "MD5"); }
};

Md5Hasher::Md5Hasher() : state_(std::make_unique<State>()) {}
Md5Hasher::~Md5Hasher() = default;
Md5Hasher::Md5Hasher(Md5Hasher&&) noexcept = default;
Md5Hasher& Md5Hasher::operator=(Md5Hasher&&) noexcept = default;

void Md5Hasher::add(std::string_view bytes) {
  require(EVP_DigestUpdate(state_->context.get(), bytes.data(), bytes.size()) == 1, "MD5");
}

Md5 Md5Hasher::finish() {
  Md5 digest;
  require(EVP_DigestFinal_ex(state_->context.get(), digest.data(), nullptr) == 1, "MD5");
  state_->begin();
  return digest;
}

}  // namespace foundation::storage::backend::s3::detail::wire
