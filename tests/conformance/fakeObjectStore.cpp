// The back end of object stores over one in memory: what can be checked of it where there is no engine.

#include "support/http/FakeObjectStore.h"
#include "ObjectStore.h"

#include <memory>
#include <utility>

namespace foundation::storage::testing {
namespace {

/// A store of its own, with its one bucket.
struct Service {
  http::FakeObjectStore store;
  http::ScriptedServer server{store.handler()};
};

Place makeFolder() {
  auto service = std::make_shared<Service>();
  boost::property_tree::ptree options;
  options.put("endpoint", service->server.url());
  options.put("region", "us-east-1");
  options.put("access-key", "testkey");
  options.put("secret-key", "any");
  auto folder = makeObjectFolder(options, "bucket");
  // The store ends after the provider, which may be polling it.
  const auto release = [service = std::move(service)](const provider::StorageItem* item) { delete item; };
  return {folder.release(), release};
}

}  // namespace
}  // namespace foundation::storage::testing

int main(int argc, char** argv) {
  using namespace foundation::storage::testing;
  return runConformance(argc, argv, {objectStore("S3Fake", &makeFolder)});
}
