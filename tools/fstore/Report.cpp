#include <fstore/Report.h>
#include <fstore/Stores.h>
#include <fstore/Text.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/ChangeEventsSubscriptionException.h>
#include <foundation/storage/provider/Exception.h>

#include <cerrno>
#include <exception>
#include <new>
#include <sstream>
#include <unistd.h>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;

namespace {

/// ECMA-48: carriage return, erase to the end of the line.
const std::string clearLine = "\r\x1b[K";

/// The enumerator's bare name.
std::string nameOf(ErrorCode code) {
  std::ostringstream text;
  text << code;
  const auto name = text.str();
  return name.substr(name.rfind(':') + 1);
}

/// For failures about which the store said nothing more.
std::u16string sentenceFor(ErrorCode code) {
  switch (code) {
    case ErrorCode::FolderNotEmpty:
      return u"The folder is not empty";
    case ErrorCode::InvalidLocation:
      return u"The location cannot name what is needed here";
    case ErrorCode::PermissionDenied:
      return u"Permission denied";
    case ErrorCode::ResourceAlreadyExists:
      return u"Something is already there";
    case ErrorCode::ResourceNotFound:
      return u"Nothing is there";
    case ErrorCode::FileTooLarge:
      return u"The file is too large";
    case ErrorCode::ResourceInUse:
      return u"It is in use";
    case ErrorCode::ReadOnlyProvider:
      return u"The store cannot be written to";
    case ErrorCode::NoSpaceLeft:
      return u"No space is left";
    case ErrorCode::IOError:
      return u"Reading or writing failed";
    case ErrorCode::InternalError:
      return u"The store ran into an internal failure";
    case ErrorCode::UnsupportedOperation:
      return u"The store has no such operation";
    case ErrorCode::Unknown:
      break;
  }
  return u"The store did not say why";
}

/// What each of the stores has said, beginning with the outermost one.
template <class Failure>
std::u16string reasonOf(const Failure& failure) {
  std::u16string reason, last;
  for (const auto& context : failure.getAllExceptionContexts())
    if (const auto info = context.getExceptionContextInfo(); info && info->getProviderMessage() != last) {
      last = info->getProviderMessage();
      reason.append(reason.empty() ? u"" : u": ").append(last);
    }
  return reason.empty() ? sentenceFor(failure.getErrorCode()) : reason;
}

/// The location of which a store told in a stream's failure, or else `where`.
std::u16string locationOf(const provider::ByteStreamFailure& failure, const std::u16string& where) {
  const auto context = failure.topExceptionContext();
  const auto info = context ? context->getExceptionContextInfo() : std::nullopt;
  const auto details =
      info ? info->getAdditionalInformation() : provider::ExceptionContextInfo::AdditionalInformation();
  const auto location = details.find(u"location");
  return location != details.end() ? location->second : where;
}

void writeToStandardError(std::string_view line) {
  while (!line.empty()) {
    const auto written = ::write(STDERR_FILENO, line.data(), line.size());
    if (written > 0)
      line.remove_prefix(static_cast<std::size_t>(written));
    else if (errno != EINTR)
      return;  // there is nobody left to tell
  }
}

}  // namespace

int Report::exitCode() const {
  if (signal_ != 0)
    return 128 + signal_;
  return failures_ > 0 ? 1 : 0;
}

void Report::failure(std::u16string_view where, ErrorCode code, std::u16string_view reason) {
  ++failures_;
  const auto line =
      "fstore " + operation_ + ": " + printable(where) + ": " + nameOf(code) + ": " + printable(reason) + "\n";
  const std::scoped_lock lock(mutex_);
  // In one piece, so that lines of programs that run side by side do not mix.
  writeToStandardError(std::exchange(hasStatus_, false) ? clearLine + line : line);
}

void Report::showStatus(const std::string& line) {
  const std::scoped_lock lock(mutex_);
  if (hasStatus_ || !line.empty())
    writeToStandardError(clearLine + line);
  hasStatus_ = !line.empty();
}

void Report::current(const std::string& argument) { current(fl::i18n::to_ustring(argument)); }

void Report::current(const std::u16string& where) {
  try {
    throw;
  } catch (const provider::Exception& failed) {
    failure(failed.getStorageIRI().toString(), failed.getErrorCode(), reasonOf(failed));
  } catch (const provider::ByteStreamFailure& failed) {
    failure(locationOf(failed, where), failed.getErrorCode(), reasonOf(failed));
  } catch (const provider::ChangeEventsSubscriptionException&) {
    failure(where, ErrorCode::IOError, u"Its changes cannot be watched");
  } catch (const provider::ChangeEventsNotSupportedException&) {
    failure(where, ErrorCode::UnsupportedOperation, u"The store does not tell of changes; --poll looks for them");
  } catch (const ArgumentFailure& failed) {
    failure(where, ErrorCode::InvalidLocation, fl::i18n::to_ustring(failed.what()));
  } catch (const std::bad_alloc&) {
    failure(where, ErrorCode::InternalError, u"Out of memory");
  } catch (const std::exception& failed) {
    failure(where, ErrorCode::Unknown, fl::i18n::to_ustring(failed.what()));
  }
}

}  // namespace fstore
