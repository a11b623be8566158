#include "s3/Clients.h"

#include <algorithm>

namespace bench {

Client rclone(const Bench& bench, const std::string& name, const std::vector<std::string>& options) {
  const auto run = [&bench, options](std::vector<std::string> words) {
    // Nothing of a configuration that this user may have.
    words.insert(words.begin(),
                 {"env", "RCLONE_CONFIG=/dev/null", "RCLONE_CONFIG_STORE_TYPE=s3", "RCLONE_CONFIG_STORE_PROVIDER=Ceph",
                  "RCLONE_CONFIG_STORE_ENV_AUTH=true", "RCLONE_CONFIG_STORE_ENDPOINT=" + bench.store.endpoint(),
                  "RCLONE_CONFIG_STORE_REGION=" + bench.store.region(), "rclone", "--quiet"});
    words.insert(words.end(), options.begin(), options.end());
    return outputOf({words});
  };
  const auto remote = [&bench](const std::string& key) { return "store:" + bench.store.bucket() + "/" + key; };
  const auto copy = [run, remote](const auto& from, const auto& to) { run({"copy", from, to}); };
  return {.name = name,
          .put =
              [run, remote](const auto& path, const auto& key) {
                run({"copyto", path, remote(key)});
              },
          .get =
              [run, remote](const auto& key, const auto& path) {
                run({"copyto", remote(key), path});
              },
          .putAll = [copy, remote](const auto& folder, const auto& key) { copy(folder, remote(key)); },
          .getAll = [copy, remote](const auto& key, const auto& folder) { copy(remote(key), folder); },
          .list =
              [run, remote](const auto& key) {
                const auto lines = run({"lsf", "--format", "sp", remote(key)});
                return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
              }};
}

}  // namespace bench
