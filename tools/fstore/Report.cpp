#include "Report.h"

#include <fl/i18n/Convert.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>

#include <cstdio>
#include <sstream>

namespace fstore {

using namespace foundation::storage::provider;

namespace {

/// "ResourceNotFound" and the like.
std::string nameOf(ErrorCode code) {
  std::ostringstream text;
  text << code;
  const auto name = text.str();
  return name.substr(name.rfind(':') + 1);
}

/// For failures of which nobody said more than the code.
const char* wordsFor(ErrorCode code) {
  switch (code) {
    case ErrorCode::FolderNotEmpty:
      return "The folder is not empty";
    case ErrorCode::InvalidLocation:
      return "Nothing of the kind can be there";
    case ErrorCode::PermissionDenied:
      return "Permission denied";
    case ErrorCode::ResourceAlreadyExists:
      return "There is something already";
    case ErrorCode::ResourceNotFound:
      return "There is nothing";
    case ErrorCode::ReadOnlyProvider:
      return "The store is read-only";
    case ErrorCode::NoSpaceLeft:
      return "The store is full";
    case ErrorCode::UnsupportedOperation:
      return "The store cannot do that";
    default:
      return "The store failed";
  }
}

/// What the back end said, if anything.
template <class Failure>
std::string reasonOf(const Failure& failure) {
  if (const auto context = failure.topExceptionContext())
    if (const auto info = context->getExceptionContextInfo(); info && !info->getProviderMessage().empty())
      return fl::i18n::to_string(info->getProviderMessage());
  return wordsFor(failure.getErrorCode());
}

/// The location that a stream's failure names, or else `subject`.
std::string locationOf(const ByteStreamFailure& failure, const std::string& subject) {
  if (const auto context = failure.topExceptionContext())
    if (const auto info = context->getExceptionContextInfo()) {
      const auto details = info->getAdditionalInformation();
      if (const auto location = details.find(u"location"); location != details.end())
        return fl::i18n::to_string(location->second);
    }
  return subject;
}

}  // namespace

bool Report::attempt(const std::string& subject, const std::function<void()>& action) {
  try {
    action();
    return true;
  } catch (const Exception& failure) {
    fail(failure.getStorageIRI(), failure.getErrorCode(), reasonOf(failure));
  } catch (const ByteStreamFailure& failure) {
    fail(locationOf(failure, subject), failure.getErrorCode(), reasonOf(failure));
  } catch (const foundation::network::IRISyntaxException& failure) {
    fail(subject, ErrorCode::InvalidLocation,
         "at offset " + std::to_string(failure.getOffset()) + ", " + failure.getReason());
  } catch (const std::bad_alloc&) {
    fail(subject, ErrorCode::InternalError, "Out of memory");
  } catch (const std::exception& failure) {
    fail(subject, ErrorCode::InvalidLocation, failure.what());
  }
  return false;
}

bool Report::attempt(const StorageIRI& subject, const std::function<void()>& action) {
  return attempt(fl::i18n::to_string(subject.toString()), action);
}

void Report::fail(const std::string& subject, ErrorCode code, const std::string& reason) {
  hasFailed_ = true;
  const auto line = "fstore " + operation_ + ": " + printable(subject) + ": " + nameOf(code) + ": " + printable(reason);
  std::fprintf(stderr, "%s\n", line.c_str());
}

void Report::fail(const StorageIRI& subject, ErrorCode code, const std::string& reason) {
  fail(fl::i18n::to_string(subject.toString()), code, reason);
}

std::string printable(const std::string& text) {
  constexpr char digits[] = "0123456789abcdef";
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F)
      out.append({'\\', 'x', digits[byte >> 4], digits[byte & 15]});
    else
      out.push_back(c);
  }
  return out;
}

}  // namespace fstore
