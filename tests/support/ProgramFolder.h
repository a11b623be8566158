#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace foundation::storage::testing {

/// A temporary folder in which other programs are run.
class ProgramFolder {
 public:
  ProgramFolder() : path_((std::filesystem::temp_directory_path() / "foundation-programs-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr)
      throw std::runtime_error("no temporary folder");
  }
  ~ProgramFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ProgramFolder(const ProgramFolder&) = delete;
  ProgramFolder& operator=(const ProgramFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string native(const std::string& name) const { return path_ + "/" + name; }

  /// Whether there is such a program.
  static bool has(const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;
  }

  /// Runs a script of sh(1) in the folder; the test fails where one of its lines does.
  /// @return what it wrote, also to its standard error
  std::string run(const std::string& script) const {
    put(".script", "set -e; exec 2>&1; cd '" + path_ + "'\n" + script + "\n");
    auto* const pipe = popen(("sh '" + native(".script") + "'").c_str(), "re");
    if (pipe == nullptr)
      throw std::runtime_error("no program can be run");
    std::string output;
    std::array<char, 4096> buffer;
    while (const auto count = std::fread(buffer.data(), 1, buffer.size(), pipe))
      output.append(buffer.data(), count);
    const auto status = pclose(pipe);
    std::filesystem::remove(native(".script"));
    EXPECT_EQ(status, 0) << script << "\n" << output;
    return output;
  }

  void put(const std::string& name, const std::string& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(native(name)).parent_path());
    std::ofstream(native(name), std::ios::binary) << bytes;
  }
  std::string content(const std::string& name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(native(name), std::ios::binary).rdbuf();
    return bytes.str();
  }

 private:
  std::string path_;
};

}  // namespace foundation::storage::testing
