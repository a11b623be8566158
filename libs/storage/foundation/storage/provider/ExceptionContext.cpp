#include <foundation/storage/provider/ExceptionContext.h>

#include <utility>

namespace foundation::storage::provider {

ExceptionContextInfo::ExceptionContextInfo(std::u16string providerMessage, std::u16string responseErrorCode,
                                           AdditionalInformation additionalInformation)
    : providerMessage_(std::move(providerMessage)),
      responseErrorCode_(std::move(responseErrorCode)),
      additionalInformation_(std::move(additionalInformation)) {}

std::u16string ExceptionContextInfo::getAdditionalInformationString() const {
  std::u16string text;
  for (const auto& [name, value] : additionalInformation_)
    text.append(name).append(u" : ").append(value).push_back(u'\n');
  return text;
}

ExceptionContext::ExceptionContext(std::u16string contextKey, std::optional<ExceptionContextInfo> contextInfo)
    : contextKey_(std::move(contextKey)), contextInfo_(std::move(contextInfo)) {}

std::u16string joinContextKeys(const ExceptionContexts& contexts) {
  std::u16string keys;
  for (const auto& context : contexts) {
    if (&context != &contexts.front())
      keys.push_back(u':');
    keys.append(context.getExceptionContextKey());
  }
  return keys;
}

}  // namespace foundation::storage::provider
