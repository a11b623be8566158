#include <foundation/storage/provider/LocalPath.h>

#include <fl/filesystem/Exceptions.h>
#include <fl/i18n/Convert.h>
#include <fl/i18n/Printable.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/storage/provider/Exception.h>

#include <boost/exception/diagnostic_information.hpp>

#include <stdexcept>

namespace foundation::storage::provider {
namespace {

ErrorCode codeOf(const fl::filesystem::FsysExceptionBase& failure) {
  if (dynamic_cast<const fl::filesystem::AccessDenied*>(&failure) != nullptr)
    return ErrorCode::PermissionDenied;
  if (dynamic_cast<const fl::filesystem::SystemError*>(&failure) != nullptr)
    return ErrorCode::IOError;
  if (dynamic_cast<const fl::filesystem::PathNotFound*>(&failure) != nullptr)
    return ErrorCode::ResourceNotFound;
  if (dynamic_cast<const fl::filesystem::InvalidArgument*>(&failure) != nullptr)
    return ErrorCode::InvalidLocation;
  return ErrorCode::Unknown;
}

}  // namespace

StorageIRI toStorageIRI(const std::u16string& scheme, const fl::filesystem::upath& path) {
  if (!network::IRI::isScheme(scheme))
    throw network::IRISyntaxException(scheme, 0, "this is no scheme");
  auto generic = path.empty() ? path : make_generic_form(path);
  if (!generic.empty() && !is_absolute(generic))
    throw std::runtime_error("File path " + fl::i18n::to_printable(path.string()) + " is not absolute.");
  return StorageIRI(scheme, std::move(generic));
}

StorageIRI toCanonicalizedStorageIRI(const std::u16string& scheme, const fl::filesystem::upath& path) {
  try {
    return toStorageIRI(scheme, get_pathname_from_volume(path));
  } catch (const fl::filesystem::FsysExceptionBase& failure) {
    Exception refusal(codeOf(failure), toStorageIRI(scheme, path));
    ExceptionContextInfo info(failure.toUstring(), fl::i18n::to_ustring(std::to_string(failure.getErrorNumber())), {});
    refusal.setExceptionContexts({ExceptionContext(fl::i18n::to_ustring(failure.getOperation()), std::move(info))});
    throw refusal;
  } catch (...) {
    throw std::runtime_error(boost::current_exception_diagnostic_information());
  }
}

fl::filesystem::upath fromStorageIRI(const StorageIRI& location) { return location.toUPath(); }

}  // namespace foundation::storage::provider
