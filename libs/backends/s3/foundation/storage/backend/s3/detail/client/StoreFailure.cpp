#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>

#include <fl/i18n/Convert.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::s3::detail::client {

using fl::i18n::to_ustring;

namespace {

std::u16string messageOf(const std::string& reason, const std::string& message) {
  return to_ustring(message.empty() ? reason : reason + " (" + message + ")");
}

/// What others have said, fit for a log and a terminal: of bounded length, and without control characters.
std::string harmless(std::string text) {
  constexpr std::size_t longest = 1024;
  if (text.size() > longest)
    text.replace(longest, std::string::npos, "...");
  std::replace_if(
      text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, ' ');
  return text;
}

FailureDetails harmless(FailureDetails details) {
  for (auto* const text : {&details.code, &details.message, &details.requestId})
    *text = harmless(std::move(*text));
  return details;
}

}  // namespace

StoreFailure::StoreFailure(provider::ErrorCode errorCode, const std::string& reason, FailureDetails details)
    : std::runtime_error(harmless(reason)), errorCode_(errorCode), details_(harmless(std::move(details))) {}

provider::ExceptionContext StoreFailure::context() const {
  const auto status = details_.status == 0 ? std::string() : std::to_string(details_.status);
  const auto& code = details_.code.empty() ? status : details_.code;
  std::unordered_map<std::u16string, std::u16string> more;
  const auto add = [&more](const std::u16string& key, const std::string& value) {
    if (!value.empty())
      more.emplace(key, to_ustring(value));
  };
  add(u"operation", details_.operation);
  add(u"status", status);
  add(u"request id", details_.requestId);
  add(u"attempts", details_.attempts == 0 ? std::string() : std::to_string(details_.attempts));
  return provider::ExceptionContext(
      u"s3", provider::ExceptionContextInfo(messageOf(what(), details_.message), to_ustring(code), std::move(more)));
}

}  // namespace foundation::storage::backend::s3::detail::client
