#include "s3/Store.h"

#include "archive/Process.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <boost/property_tree/ptree.hpp>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace bench {
namespace {

namespace storage = foundation::storage;
using storage::provider::StorageItem;

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr)
    throw std::runtime_error(std::string(name) + " is not set; \"./dev bench s3\" starts a store, and sets it");
  return value;
}

storage::registry::ProviderRegistry makeRegistry(const std::string& endpoint, const std::string& region) {
  boost::property_tree::ptree options;
  options.put("s3.endpoint", endpoint);
  options.put("s3.region", region);
  auto registry = storage::registry::makeDefaultRegistry();
  registry.configure(options);
  return registry;
}

/// The request's method in a line such as `... beast: ... "PUT /bucket/key HTTP/1.1" 200 ...`; empty in others.
std::string methodIn(const std::string& line) {
  const auto quote = line.find(" beast: ") == std::string::npos ? std::string::npos : line.find('"');
  if (quote == std::string::npos || line.find("/mark-", quote) != std::string::npos)
    return {};
  return line.substr(quote + 1, line.find(' ', quote) - quote - 1);
}

}  // namespace

Store::Store()
    : endpoint_(environment("FOUNDATION_S3_ENDPOINT")),
      region_(environment("FOUNDATION_S3_REGION")),
      bucket_(environment("FOUNDATION_S3_BUCKET")),
      engine_(environment("FOUNDATION_ENGINE")),
      registry_(makeRegistry(endpoint_, region_)) {}

StorageItem Store::item(const std::string& key) const { return registry_.item(fl::i18n::to_ustring(location(key))); }

StorageItem Store::file(const std::string& path) const {
  return registry_.item(fl::i18n::to_ustring("file://" + path));
}

void Store::clear(const std::string& folder) const {
  if (const auto place = item(folder); place.folderExists())
    place.removeFolderRecursively();
  outputOf({{"radosgw-admin", "-c", engine_ + "/ceph.conf", "gc", "process", "--include-all"}});
}

std::string Store::linesUpTo(const std::string& mark) {
  for (;;) {
    std::ifstream log(engine_ + "/gateway.log");
    log.seekg(static_cast<std::streamoff>(seen_));
    std::string lines((std::istreambuf_iterator<char>(log)), {});
    const auto found = lines.find("/" + mark + " ");
    const auto end = found == std::string::npos ? found : lines.find('\n', found);
    if (end != std::string::npos) {
      seen_ += end;
      lines.resize(end);
      return lines;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));  // it writes its log later than it answers
  }
}

std::string Store::requests() {
  const auto mark = "mark-" + std::to_string(++marks_);
  outputOf({{"curl", "-s", "-o", "/dev/null", url(mark)}});
  std::istringstream lines(linesUpTo(mark));
  std::map<std::string, std::size_t> counts;
  for (std::string line; std::getline(lines, line);)
    if (const auto method = methodIn(line); !method.empty())
      ++counts[method];
  std::string text;
  for (const auto& [method, count] : counts)
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + method;
  return text;
}

}  // namespace bench
