#include <fstore/ContainerPath.h>
#include <fstore/Stores.h>

#include <fl/i18n/Convert.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/registry/ConfigurationFileException.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::StorageIRI;

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool fitsInScheme(char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'; }

StorageIRI parse(const std::string& text) {
  try {
    return StorageIRI(fl::i18n::to_ustring(text));
  } catch (const foundation::network::IRISyntaxException& failure) {
    throw ArgumentFailure("Not a valid IRI: at offset " + std::to_string(failure.getOffset()) + ", " +
                          failure.getReason());
  } catch (const std::runtime_error& failure) {
    throw ArgumentFailure(failure.what());
  }
}

std::string currentFolder() {
  std::error_code error;
  const auto folder = std::filesystem::current_path(error);
  if (error)
    throw ArgumentFailure("The current folder cannot be found: " + error.message());
  return folder.native();
}

/// Takes every "./" off the front of a relative path; what is left of "." is the empty path.
std::string_view withoutLeadingDots(std::string_view path) {
  while (path.starts_with("./"))
    path.remove_prefix(std::min(path.find_first_not_of('/', 1), path.size()));
  return path == "." ? "" : path;
}

std::string absolutePath(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/'))
    path.remove_suffix(1);
  if (path.starts_with('/'))
    return "/" + std::string(path.substr(std::min(path.find_first_not_of('/'), path.size())));
  const auto relative = withoutLeadingDots(path);
  auto folder = currentFolder();
  if (!relative.empty() && !folder.ends_with('/'))
    folder.push_back('/');
  return folder.append(relative);
}

StorageIRI locationOf(const std::string& path) {
  return provider::toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(absolutePath(path))));
}

StorageIRI locationOf(const ContainerPath& place) {
  auto location = locationOf(place.file);
  try {
    for (const auto& step : place.steps)
      location = StorageIRI(fl::i18n::to_ustring(step.scheme), location, fl::i18n::to_ustring(step.path));
  } catch (const std::runtime_error& failure) {
    throw ArgumentFailure(failure.what());
  }
  return location;
}

std::string inLowerCase(std::string_view scheme) {
  std::string text(scheme);
  for (auto& c : text)
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

std::set<std::string> containersIn(const foundation::storage::registry::ProviderRegistry& registry) {
  std::set<std::string> schemes;
  for (const auto& registration : registry.registrations())
    if (registration.role == foundation::storage::registry::Role::Container)
      schemes.insert(fl::i18n::to_string(registration.name));
  return schemes;
}

/// Options are checked when a store is first used; here before anything is done.
void checkOptions(const foundation::storage::registry::ProviderRegistry& registry) {
  using foundation::storage::registry::Role;
  for (const auto& registration : registry.registrations())
    try {
      if (registration.role == Role::Physical)
        registry.item(registration.name + u":///");
      else if (registration.role == Role::Container)
        registry.item(registration.name + u":memory:///a!/");
    } catch (const provider::Exception&) {
      // That there is no such place says nothing about options.
    }
}

}  // namespace

bool isLocationText(std::string_view argument) {
  const auto end = std::find_if_not(argument.begin(), argument.end(), fitsInScheme);
  return end != argument.end() && *end == ':' && isLetter(argument.front());
}

Stores::Stores(const std::optional<std::string>& configuration)
    : registry_(foundation::storage::registry::makeDefaultRegistry()), containers_(containersIn(registry_)) {
  if (!configuration)
    return;
  try {
    registry_.configureFromFile(*configuration);
    checkOptions(registry_);
  } catch (const foundation::storage::registry::ConfigurationFileException& failure) {
    throw ArgumentFailure(failure.what());
  } catch (const std::invalid_argument& failure) {
    throw ArgumentFailure(*configuration + ": " + failure.what());
  }
}

provider::StorageItem Stores::open(const std::string& argument) const { return registry_.item(locate(argument)); }

StorageIRI Stores::locate(const std::string& argument) const {
  if (argument.empty())
    throw ArgumentFailure("The path is empty");
  const auto inContainer = parseContainerPath(
      argument, [this](std::string_view scheme) { return containers_.contains(inLowerCase(scheme)); });
  if (inContainer)
    return locationOf(*inContainer);
  return isLocationText(argument) ? parse(argument) : locationOf(argument);
}

}  // namespace fstore
