#include "Content.h"
#include "CopyTree.h"
#include "Entries.h"
#include "Listing.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr int usageError = 2;

/// The command line: each subcommand's arguments, and what it runs.
class CommandLine {
 public:
  CommandLine() {
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "fstore " FSTORE_VERSION);
    app_.footer(
        "A PLACE is the text of a location, such as file:///etc/os-release, or a path.\n"
        "A path that looks like a location is written ./a:b.\n"
        "Exit codes: 0 done, 1 failed, 2 wrong usage.");
    addReadingCommands();
    addWritingCommands();
  }

  int run(int argc, char** argv) {
    try {
      app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      return app_.exit(error) == 0 ? 0 : usageError;
    }
    return action_();
  }

 private:
  CLI::App* add(const std::string& name, const std::string& description, std::function<int()> action) {
    auto* command = app_.add_subcommand(name, description);
    command->callback([this, action = std::move(action)] { action_ = action; });
    return command;
  }

  void addPlaces(CLI::App* command, const std::string& name, int least) {
    command->add_option(name, places_)->required(least > 0)->expected(least, CLI::detail::expected_max_vector_size);
  }

  void addReadingCommands() {
    auto* ls = add("ls", "List a folder", [this] {
      return fstore::list(places_.empty() ? std::vector<std::string>{"."} : places_, listOptions_);
    });
    ls->add_flag("-l", listOptions_.withDetails, "Type, link, writable, size in bytes and time (UTC) with each name");
    ls->add_flag("-a", listOptions_.withHidden, "Hidden entries, too");
    ls->add_flag("-U", listOptions_.unsorted, "In the store's order, as they come");
    addPlaces(ls, "PLACE", 0);
    addPlaces(add("stat", "Tell what is known of files and folders", [this] { return fstore::describe(places_); }),
              "PLACE", 1);
    addPlaces(add("cat", "Write files to standard output", [this] { return fstore::concatenate(places_); }), "FILE", 1);
  }

  void addWritingCommands() {
    auto* put = add("put", "Write standard input to a file; what fails half way leaves half a file",
                    [this] { return fstore::put(places_.front(), flag_); });
    put->add_flag("--append", flag_, "Continue the file instead of replacing it");
    put->add_option("FILE", places_)->required()->expected(1);
    addTransfer(add("cp", "Copy files and folders, following links", [this] { return fstore::copy(places_, flag_); }));
    addTransfer(add("mv", "Move or rename files and folders", [this] { return fstore::move(places_, flag_); }));
    auto* rm = add("rm", "Remove files", [this] { return fstore::remove(places_, flag_); });
    rm->add_flag("-r", flag_, "Folders, too, with all that is in them");
    addPlaces(rm, "PLACE", 1);
    auto* mkdir = add("mkdir", "Create folders", [this] { return fstore::makeFolders(places_, flag_); });
    mkdir->add_flag("-p", flag_, "Those above, too; an existing folder will do");
    addPlaces(mkdir, "FOLDER", 1);
  }

  void addTransfer(CLI::App* command) {
    command->add_flag("-n,--no-clobber", flag_, "Keep files that exist");
    addPlaces(command, "SOURCE... TARGET", 2);
  }

  CLI::App app_{"Reaches stored files and folders, wherever they live."};
  std::function<int()> action_;
  std::vector<std::string> places_;
  fstore::ListOptions listOptions_;
  bool flag_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  try {
    return CommandLine().run(argc, argv);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "fstore: %s\n", failure.what());
    return 1;
  }
}
