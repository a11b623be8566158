#pragma once

#include "support/http/FakeObjectStore.h"
#include "support/http/ScriptedServer.h"

#include <foundation/storage/backend/s3/detail/stream/Streams.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::backend::s3::detail::stream {

using provider::ErrorCode;

constexpr std::size_t kibi = 1024;
constexpr std::size_t mebi = 1024 * kibi;

/// Streams over a store in this process, of the object "a".
class StreamTest : public ::testing::Test {
 protected:
  StreamTest() {
    store.onRequest([this](const std::string& operation, const auto& /*request*/) {
      if (before)
        before(operation);
    });
  }

  client::Client makeClient(std::uint64_t partSize, unsigned parallelParts = 4) const {
    client::Settings settings;
    settings.endpoint = server.url();
    settings.addressing = client::Addressing::Path;
    settings.credentials = [] { return wire::Credentials{"testkey", "testsecret"}; };
    settings.partSize = partSize;
    settings.parallelParts = parallelParts;
    settings.attempts = 2;
    return {settings, "bucket"};
  }
  Target target(std::uint64_t partSize, unsigned parallelParts = 4) const {
    return {makeClient(partSize, parallelParts), "a", provider::StorageIRI(u"s3://bucket/a")};
  }

  std::string content(const std::string& key = "a") const {
    const auto object = store.get(key);
    return object ? object->content : "(nothing)";
  }
  /// How many of the first requests are left out.
  std::vector<std::string> operationsAfter(std::size_t count) const {
    auto operations = store.operations();
    operations.erase(operations.begin(), operations.begin() + static_cast<std::ptrdiff_t>(count));
    return operations;
  }

  /// Called before each request, until the server dies: requests that a stream has given up may come late.
  std::function<void(const std::string& operation)> before;
  testing::http::FakeObjectStore store;
  testing::http::ScriptedServer server{store.handler()};
};

/// Bytes of which no two pieces are alike.
inline std::string sample(std::size_t size) {
  std::string bytes;
  for (std::uint64_t state = 1; bytes.size() < size; state = state * 6364136223846793005u + 1442695040888963407u)
    bytes.append(reinterpret_cast<const char*>(&state), sizeof state);
  bytes.resize(size);
  return bytes;
}

/// Up to so many bytes.
inline std::string readSome(provider::ByteStream& stream, std::size_t count) {
  std::string bytes(count, '\0');
  std::size_t done = 0;
  while (done < count) {
    const auto got = stream.read(bytes.data() + done, static_cast<std::int64_t>(count - done));
    if (got <= 0)
      break;
    done += static_cast<std::size_t>(got);
  }
  bytes.resize(done);
  return bytes;
}

inline std::string readAll(provider::ByteStream& stream) {
  std::string all;
  for (;;) {
    const auto bytes = readSome(stream, 100'000);
    all += bytes;
    if (bytes.size() < 100'000)
      return all;
  }
}

template <class Stream>
void writeAll(Stream& stream, std::string_view bytes) {
  ASSERT_EQ(stream.write(bytes.data(), static_cast<std::int64_t>(bytes.size())),
            static_cast<std::int64_t>(bytes.size()));
}

/// How `action` fails; nothing where it does not.
inline std::optional<ErrorCode> failure(const std::function<void()>& action) {
  try {
    action();
  } catch (const provider::ByteStreamFailure& failure) {
    return failure.getErrorCode();
  } catch (const client::StoreFailure& failure) {
    return failure.errorCode();
  }
  return std::nullopt;
}

}  // namespace foundation::storage::backend::s3::detail::stream
