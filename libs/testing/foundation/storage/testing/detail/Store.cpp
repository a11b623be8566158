#include <foundation/storage/testing/detail/Store.h>

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>

#include <algorithm>
#include <array>

namespace foundation::storage::testing::detail {
namespace {

bool isFolderPath(const std::u16string& path) { return path.ends_with(u'/'); }

void createFolderIfMissing(const StorageItem& folder) {
  if (!folder.folderExists())
    folder.createFolderRecursive();
}

}  // namespace

void Store::fill(const Contents& contents) {
  if (backEnd_.makeFolderWith) {
    place_ = backEnd_.makeFolderWith(contents);
    return;
  }
  place_ = backEnd_.makeEmptyFolder();
  for (const auto& [path, bytes] : contents) {
    const auto name = isFolderPath(path) ? path.substr(0, path.size() - 1) : path;
    const auto slash = name.rfind(u'/');
    if (slash != std::u16string::npos)
      createFolderIfMissing(item(name.substr(0, slash)));
    if (isFolderPath(path))
      createFolderIfMissing(item(name));
    else
      put(item(name), bytes);
  }
}

std::string Store::content(const std::u16string& path) const { return contentOf(item(path)); }

Names Store::names(const std::u16string& path) const {
  return namesIn((path.empty() ? folder() : item(path)).listAllNamesOnly({}));
}

std::string readAll(provider::ByteStream& stream) {
  std::string bytes;
  std::array<char, 65536> buffer;
  for (;;) {
    const auto got = stream.read(buffer.data(), buffer.size());
    if (got <= 0)
      return bytes;
    bytes.append(buffer.data(), static_cast<std::size_t>(got));
  }
}

void put(const StorageItem& file, std::string_view bytes) {
  const auto stream = file.openStream(replacing);
  writeAll(*stream, bytes);
  stream->close();
}

std::string contentOf(const StorageItem& file) {
  const auto stream = file.openReadOnlyStream();
  auto bytes = readAll(*stream);
  stream->close();
  return bytes;
}

Names namesIn(provider::IProvider::Listing listing) {
  Names names;
  while (listing->hasNext()) {
    listing->next();
    names.push_back(listing->current().getName());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string sample(std::size_t size) {
  std::string bytes(size, '\0');
  std::uint32_t state = 2463534242;  // any but 0; xorshift, from Marsaglia's "Xorshift RNGs" (2003)
  for (auto& byte : bytes) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    byte = static_cast<char>(state);
  }
  return bytes;
}

namespace {

::testing::AssertionResult compare(ErrorCode expected, ErrorCode found, const char* text) {
  return found == expected ? ::testing::AssertionSuccess()
                           : ::testing::AssertionFailure() << "expected " << expected << ", but got: " << text;
}

}  // namespace

::testing::AssertionResult refuses(ErrorCode code, const StorageItem& at, const std::function<void()>& action) {
  try {
    action();
  } catch (const provider::Exception& failure) {
    if (failure.getStorageIRI() != at.getLocation())
      return ::testing::AssertionFailure() << "expected " << at.getLocation() << " to be at fault: " << failure.what();
    return compare(code, failure.getErrorCode(), failure.what());
  } catch (const std::exception& failure) {
    return ::testing::AssertionFailure() << "expected an Exception with " << code << ", but got: " << failure.what();
  }
  return ::testing::AssertionFailure() << "expected " << code << ", but nothing was thrown";
}

::testing::AssertionResult refusesStream(ErrorCode code, const StorageItem& at, const std::function<void()>& action) {
  auto result = ::testing::AssertionSuccess();
  const auto plain = refuses(code, at, [&] {
    try {
      action();
    } catch (const provider::ByteStreamFailure& failure) {
      result = failure.topExceptionContext() ? compare(code, failure.getErrorCode(), failure.what())
                                             : ::testing::AssertionFailure() << "no context: " << failure.what();
      throw provider::Exception(code, at.getLocation());  // judged already
    }
  });
  return result ? plain : result;
}

::testing::AssertionResult failsAsStream(const std::function<void()>& action) {
  try {
    action();
  } catch (const provider::ByteStreamFailure&) {
    return ::testing::AssertionSuccess();
  } catch (const std::exception& failure) {
    return ::testing::AssertionFailure() << "expected the failure of a stream, but got: " << failure.what();
  }
  return ::testing::AssertionFailure() << "expected the failure of a stream, but nothing was thrown";
}

}  // namespace foundation::storage::testing::detail
