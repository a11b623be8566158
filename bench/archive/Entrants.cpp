#include "archive/Entrants.h"

#include <memory>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

void requireEqual(const std::string& expected, const std::string& found) {
  if (found != expected)
    throw std::runtime_error("what came out is not what lies in the archive");
}

}  // namespace

std::string locationIn(const std::string& scheme, const std::string& path, const std::string& name) {
  return scheme + ":file://" + path + "!/" + name;
}

Entrant giving(std::string name, std::function<std::string()> run, const std::string& expected) {
  const auto found = std::make_shared<std::string>();
  return {.name = std::move(name),
          .run = [found, run = std::move(run)](std::size_t) { *found = run(); },
          .check =
              [found, expected](std::size_t) {
                requireEqual(expected, *found);
                found->clear();
              }};
}

void addProgram(Workload& workload, const std::string& name, const Command& command, const std::string& expected) {
  addProgram(workload, name, command, [expected](const std::string& output) { requireEqual(expected, output); });
}

void addProgram(Workload& workload, const std::string& name, const Command& command,
                const std::function<void(const std::string& output)>& check) {
  if (command.words.front().empty() || !isInstalled(command.words.front()))
    return workload.notes.push_back(name + " is not here");
  const auto output = std::make_shared<std::string>();
  workload.entrants.push_back({.name = name,
                               .run = [output, command](std::size_t) { *output = outputOf(command); },
                               .check = [output, check](std::size_t) { check(*output); }});
}

}  // namespace bench
