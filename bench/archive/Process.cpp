#include "archive/Process.h"

#include "disk/Descriptor.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>

namespace bench {
namespace {

/// What the program is to find as its standard streams and its folder.
class Surroundings {
 public:
  Surroundings(const Command& command, const std::array<int, 2>& pipe) {
    require(posix_spawn_file_actions_init(&actions_));
    require(posix_spawn_file_actions_addchdir_np(&actions_, command.folder.c_str()));
    require(posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, command.input.c_str(), O_RDONLY, 0));
    require(posix_spawn_file_actions_adddup2(&actions_, pipe[1], STDOUT_FILENO));
  }
  ~Surroundings() { posix_spawn_file_actions_destroy(&actions_); }
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

  pid_t start(const std::vector<std::string>& words) const {
    std::vector<char*> arguments;
    for (const auto& word : words)
      arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_t child = -1;
    require(posix_spawnp(&child, arguments.front(), &actions_, nullptr, arguments.data(), environ));
    return child;
  }

 private:
  static void require(int error) {
    if (error != 0)
      throw std::system_error(error, std::generic_category(), "starting a program");
  }

  posix_spawn_file_actions_t actions_{};
};

std::string readAll(int descriptor) {
  std::string all;
  std::size_t size = 0;
  for (;;) {
    if (all.size() - size < 256 * 1024)
      all.resize(2 * all.size() + 256 * 1024);
    const auto got = ::read(descriptor, all.data() + size, all.size() - size);
    check(got >= 0, "pipe");
    if (got == 0)
      break;
    size += static_cast<std::size_t>(got);
  }
  all.resize(size);
  return all;
}

}  // namespace

bool isInstalled(const std::string& program) {
  if (program.find('/') != std::string::npos)
    return access(program.c_str(), X_OK) == 0;
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "");
  for (std::string folder; std::getline(folders, folder, ':');)
    if (access((folder + "/" + program).c_str(), X_OK) == 0)
      return true;
  return false;
}

std::string outputOf(const Command& command) {
  std::array<int, 2> pipe{};
  check(pipe2(pipe.data(), O_CLOEXEC) == 0, "pipe");
  pid_t child = -1;
  std::string output;
  try {
    child = Surroundings(command, pipe).start(command.words);
    close(pipe[1]);
    output = readAll(pipe[0]);
  } catch (const std::exception&) {
    close(pipe[0]);
    throw;
  }
  close(pipe[0]);
  int status = 0;
  check(waitpid(child, &status, 0) == child, "waitpid");
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error(command.words.front() + " ended with status " + std::to_string(status));
  return output;
}

}  // namespace bench
