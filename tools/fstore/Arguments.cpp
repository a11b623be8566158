#include "Arguments.h"

#include <fl/i18n/Convert.h>
#include <foundation/network/IRI.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LocalPath.h>

#include <filesystem>

namespace fstore {

using namespace foundation::storage::provider;
using foundation::network::IRI;
using foundation::storage::backend::local::LocalProviderFactory;

namespace {

bool isLocationText(const std::u16string& argument) {
  const auto colon = argument.find(u':');
  return colon != std::u16string::npos && IRI::isScheme(std::u16string_view(argument).substr(0, colon));
}

/// Absolute, without leading '/' that would name a server, and without a '/' at the end. Dots stay: with
/// links in the path only the file system knows where ".." leads.
std::u16string absolutePath(std::u16string path) {
  if (path == u"." || path == u"./")
    path.clear();
  if (!path.starts_with(u'/'))
    path = fl::i18n::to_ustring(std::filesystem::current_path().native()) + u"/" + path;
  const auto begin = path.find_first_not_of(u'/');
  path = begin == std::u16string::npos ? u"/" : path.substr(begin - 1);
  while (path.size() > 1 && path.back() == u'/')
    path.pop_back();
  return path;
}

StorageIRI locationOf(const std::u16string& argument) {
  if (isLocationText(argument))
    return StorageIRI(argument);
  return toStorageIRI(u"file", fl::filesystem::upath(absolutePath(argument)));
}

[[noreturn]] void refuseScheme(const StorageIRI& location) {
  Exception refusal(ErrorCode::UnsupportedOperation, location);
  ExceptionContextInfo info(u"No back end serves the scheme '" + location.getScheme() + u"'", {}, {});
  refusal.setExceptionContexts({ExceptionContext(u"fstore", std::move(info))});
  throw refusal;
}

}  // namespace

StorageItem itemFor(const std::string& argument) {
  static const LocalProviderFactory local;
  static const auto provider = local.buildProvider(StorageIRI(u"file:///"));
  auto location = locationOf(fl::i18n::to_ustring(argument));
  if (location.getScheme() != u"file")
    refuseScheme(location);
  return {provider, std::move(location)};
}

}  // namespace fstore
