#include "s3/Clients.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace bench {
namespace {

/// What is asked of curl, for its option --config.
class Script {
 public:
  Script(const Bench& bench, std::size_t atOnce) : path_(bench.space.path() + "/curl.config") {
    text_ << "no-progress-meter\nshow-error\nfail\nparallel\nparallel-max = " << atOnce
          << "\naws-sigv4 = \"aws:amz:" << bench.store.region() << ":s3\"\nuser = \""
          << std::getenv("AWS_ACCESS_KEY_ID") << ":"
          << std::getenv("AWS_SECRET_ACCESS_KEY")
          // Its signer does not send what it has signed of the content.
          << "\"\nheader = \"x-amz-content-sha256: UNSIGNED-PAYLOAD\"\n";
  }

  void put(const std::string& path, const std::string& url) {
    text_ << "upload-file = \"" << path << "\"\nurl = \"" << url << "\"\n";
  }
  void get(const std::string& url, const std::string& path) {
    text_ << "url = \"" << url << "\"\noutput = \"" << path << "\"\n";
  }
  void print(const std::string& url) { text_ << "url = \"" << url << "\"\n"; }

  /// @return what it prints
  std::string run() const {
    writeFile(path_, text_.str());
    return outputOf({{"curl", "--config", path_}});
  }

 private:
  std::string path_;
  std::ostringstream text_;
};

/// The names of the small files, in order.
Paths namesOf(const Bench& bench) {
  Paths names;
  for (const auto& entry : std::filesystem::directory_iterator(bench.space.path() + "/small"))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

std::size_t count(const std::string& text, const std::string& word) {
  std::size_t found = 0;
  for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size()))
    ++found;
  return found;
}

/// One page after the other, as a listing goes: each begins behind the last name of the one before, which is known here
/// without reading it.
std::size_t list(const Bench& bench, const std::string& key) {
  Script script(bench, 1);
  const auto names = namesOf(bench);
  auto url = bench.store.url("?list-type=2&max-keys=1000&prefix=" + key + "%2F");
  script.print(url);
  for (std::size_t number = 999; number + 1 < names.size(); number += 1000)
    script.print(url + "&start-after=" + key + "%2F" + names[number]);
  return count(script.run(), "<Contents>");
}

}  // namespace

Client curl(const Bench& bench, std::size_t atOnce) {
  return {.name = atOnce == 1 ? "curl" : "curl, " + std::to_string(atOnce) + " at once",
          .put =
              [&](const auto& path, const auto& key) {
                Script script(bench, 1);
                script.put(path, bench.store.url(key));
                script.run();
              },
          .get =
              [&](const auto& key, const auto& path) {
                Script script(bench, 1);
                script.get(bench.store.url(key), path);
                script.run();
              },
          .putAll =
              [&bench, atOnce](const auto& folder, const auto& key) {
                Script script(bench, atOnce);
                for (const auto& name : namesOf(bench))
                  script.put(folder + "/" + name, bench.store.url(key + "/" + name));
                script.run();
              },
          .getAll =
              [&bench, atOnce](const auto& key, const auto& folder) {
                Script script(bench, atOnce);
                std::filesystem::create_directory(folder);
                for (const auto& name : namesOf(bench))
                  script.get(bench.store.url(key + "/" + name), folder + "/" + name);
                script.run();
              },
          .list = [&](const auto& key) { return list(bench, key); }};
}

}  // namespace bench
