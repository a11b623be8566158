#include <fstore/Checksum.h>
#include <fstore/JsonArray.h>
#include <fstore/Text.h>

#include <fl/i18n/Convert.h>

#include <nlohmann/json.hpp>
#include <openssl/evp.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::StorageItem;

namespace {

constexpr std::size_t blockSize = 256 * 1024;

class Sha256 {
 public:
  Sha256() { require(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1); }

  void add(std::string_view bytes) { require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1); }

  /// In hexadecimal digits; nothing can be added after that.
  std::string digits() {
    constexpr std::string_view names = "0123456789abcdef";
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
    unsigned size = 0;
    require(EVP_DigestFinal_ex(context_.get(), digest.data(), &size) == 1);
    std::string text;
    for (unsigned i = 0; i < size; ++i)
      text.append({names[digest[i] >> 4], names[digest[i] & 15]});
    return text;
  }

 private:
  static void require(bool isWell) {
    if (!isWell)
      throw std::runtime_error("SHA-256 cannot be calculated");
  }

  struct Release {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD_CTX, Release> context_{EVP_MD_CTX_new()};
};

std::string checksum(const StorageItem& file, std::string& buffer) {
  Sha256 sum;
  const auto stream = file.openReadOnlyStream();
  for (;;) {
    const auto got = stream->read(buffer.data(), static_cast<std::int64_t>(buffer.size()));
    if (got <= 0)
      break;
    sum.add({buffer.data(), static_cast<std::size_t>(got)});
  }
  stream->close();
  return sum.digits();
}

std::string escaped(const std::string& name) {
  std::string out;
  for (const char c : name)
    if (c == '\\')
      out += "\\\\";
    else if (c == '\n')
      out += "\\n";
    else if (c == '\r')
      out += "\\r";
    else
      out += c;
  return out;
}

std::string lineOf(const std::string& digits, const std::string& name, bool isTerminal) {
  const auto shown = escaped(name);
  return (shown == name ? "" : "\\") + digits + "  " + (isTerminal ? printable(fl::i18n::to_ustring(shown)) : shown) +
         "\n";
}

}  // namespace

void printChecksums(const Session& session, const std::vector<std::string>& arguments, Format format) {
  JsonArray json(session.output, format);
  std::string buffer(blockSize, '\0');
  session.forEach(arguments, [&](const StorageItem& file, const std::string& argument) {
    const auto digits = checksum(file, buffer);
    if (json.isWritten())
      json.add({{"location", fl::i18n::to_string(file.getLocation().toString())}, {"sha256", digits}});
    else
      session.output.write(lineOf(digits, argument, session.output.isTerminal()));
    session.output.flush();  // the next file may take long
  });
  json.end();
}

}  // namespace fstore
