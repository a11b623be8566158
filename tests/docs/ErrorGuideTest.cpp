// The code that docs/errors.md quotes, and that it does what is said there.

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

// [code]
using namespace foundation::storage::provider;

/// The code of the failure that is being handled; nothing where it has none.
std::optional<ErrorCode> currentCode() {
  try {
    throw;
  } catch (const Exception& failure) {
    return failure.getErrorCode();
  } catch (const ByteStreamFailure& failure) {
    return failure.getErrorCode();
  } catch (...) {
    return std::nullopt;
  }
}

std::string readStart(const StorageItem& item, const std::string& ifMissing) {
  try {
    std::string start(80, '\0');
    const auto size = item.openReadOnlyStream()->read(start.data(), 80);
    return start.substr(0, size < 0 ? 0 : static_cast<std::size_t>(size));
  } catch (...) {
    if (currentCode() != ErrorCode::ResourceNotFound)
      throw;
    return ifMissing;
  }
}
// [code]

// [contexts]
template <class Failure>  // Exception or ByteStreamFailure
std::string explain(const Failure& failure) {
  std::string text;
  for (const auto& context : failure.getAllExceptionContexts()) {
    text += fl::i18n::to_string(context.getExceptionContextKey());  // "open", "rename"; "memory", "archive", "registry"
    if (const auto info = context.getExceptionContextInfo()) {
      text += ": " + fl::i18n::to_string(info->getProviderMessage());         // "No such file or directory"
      const auto number = fl::i18n::to_string(info->getResponseErrorCode());  // "2", or nothing
      if (!number.empty())
        text += " (" + number + ")";
      const auto details = info->getAdditionalInformation();  // "name" -> "ENOENT", "location" -> "file:///..."
      if (const auto name = details.find(u"name"); name != details.end())
        text += " " + fl::i18n::to_string(name->second);
    }
    text += '\n';
  }
  return text;
}
// [contexts]

class ErrorGuideTest : public ::testing::Test {
 protected:
  const foundation::storage::registry::ProviderRegistry registry = foundation::storage::registry::makeDefaultRegistry();
};

TEST_F(ErrorGuideTest, ActsOnTheCodeInEveryStore) {
  for (const auto* missing : {u"file:///no/such/file", u"memory:///none", u"zip:memory:///none.zip!/none"})
    EXPECT_EQ(readStart(registry.item(missing), "missing"), "missing");
  EXPECT_THROW(readStart(registry.item(u"file:///"), "missing"), std::exception);
  const auto file = registry.item(u"memory:///file");
  file.openStream({})->write("text", 4);
  EXPECT_EQ(readStart(file, "missing"), "text");
}

TEST_F(ErrorGuideTest, TellsWhatTheStoreSaid) {
  try {
    registry.item(u"file:///no/such/file").removeFile();
    FAIL() << "removed what is not there";
  } catch (const Exception& failure) {
    EXPECT_EQ(explain(failure), "unlink: No such file or directory (2) ENOENT\n");
    EXPECT_EQ(failure.getStorageIRI().toString(), u"file:///no/such/file");
  }
  try {
    registry.item(u"zip:memory:///none.zip!/none").getFileAttributes();
    FAIL() << "found what is not there";
  } catch (const Exception& failure) {
    EXPECT_EQ(explain(failure), "archive: There is no such archive\n");
  }
}

}  // namespace
