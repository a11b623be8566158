#include <foundation/storage/registry/ConfigurationFileException.h>

#include <fl/i18n/Convert.h>

#include <utility>

namespace foundation::storage::registry {
namespace {

std::string placeText(const std::filesystem::path& file, unsigned long line) {
  return line == 0 ? file.string() : file.string() + ":" + std::to_string(line);
}

}  // namespace

ConfigurationFileException::ConfigurationFileException(std::filesystem::path file, unsigned long line,
                                                       const std::string& reason)
    : std::runtime_error(placeText(file, line) + ": " + reason), file_(std::move(file)), line_(line) {}

ConfigurationFileException::~ConfigurationFileException() = default;

std::u16string ConfigurationFileException::ToUstringImpl() const { return fl::i18n::to_ustring(what()); }

}  // namespace foundation::storage::registry
