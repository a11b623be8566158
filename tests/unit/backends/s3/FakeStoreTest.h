#pragma once

#include "support/http/FakeObjectStore.h"

#include <foundation/storage/backend/s3/detail/client/Client.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace foundation::storage::backend::s3::detail::client {

using provider::ErrorCode;
using testing::http::answering;
using testing::http::damaging;
using testing::http::failing;
using testing::http::FakeObjectStore;
using testing::http::losingTheAnswer;
using testing::http::ReceivedRequest;
using testing::http::ScriptedAnswer;
using testing::http::ScriptedServer;
using testing::http::StoreTraits;

/// A client of a store in this process.
struct FakeStore : FakeObjectStore {
  explicit FakeStore(StoreTraits traits = {}) : FakeObjectStore(std::move(traits)), server(handler()) {}

  Settings settings() const {
    Settings settings;
    settings.endpoint = server.url();
    settings.addressing = Addressing::Path;
    settings.credentials = [] { return wire::Credentials{"testkey", "secret"}; };
    settings.attempts = 3;
    return settings;
  }
  Client client(const std::string& bucket = "bucket") const { return {settings(), bucket}; }

  ScriptedServer server;
};

/// The failure of `action`; nothing where there is none.
inline std::optional<StoreFailure> failureIn(const std::function<void()>& action) {
  try {
    action();
  } catch (const StoreFailure& failure) {
    return failure;
  }
  return std::nullopt;
}

inline std::optional<ErrorCode> errorCodeOf(const std::function<void()>& action) {
  const auto failure = failureIn(action);
  return failure ? std::optional(failure->errorCode()) : std::nullopt;
}

/// Does what is asked as if that header were not there.
inline testing::http::Fault ignoring(const std::string& header) {
  return [header](auto request, const auto& act) {
    request.headers.erase(header);
    return act(request);
  };
}

/// Changes a header of the answer.
inline testing::http::Fault answeringWith(const std::string& name, const std::string& value) {
  return damaging([=](auto answer) {
    for (auto& header : answer.headers)
      if (header.first == name)
        header.second = value;
    return answer;
  });
}

}  // namespace foundation::storage::backend::s3::detail::client
