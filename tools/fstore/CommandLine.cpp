#include <fstore/CommandLine.h>
#include <fstore/Commands.h>
#include <fstore/Completion.h>
#include <fstore/Manual.h>
#include <fstore/Text.h>

#include <fl/i18n/Convert.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace fstore {
namespace {

using foundation::storage::provider::ErrorCode;
using Arguments = std::vector<std::string>;

constexpr int wrongUsage = 2;

/// Writes `usage` instead of what CLI11 makes of a parser's options.
class HelpText : public CLI::Formatter {
 public:
  explicit HelpText(std::string usage) : usage_(std::move(usage)) {}

  std::string make_usage(const CLI::App*, std::string) const override { return "\nUsage: fstore " + usage_ + "\n"; }

 private:
  std::string usage_;
};

ErrorCode codeOf(const OutputFailure& failure) {
  switch (failure.code().value()) {
    case ENOSPC:
    case EDQUOT:
      return ErrorCode::NoSpaceLeft;
    case EFBIG:
      return ErrorCode::FileTooLarge;
    default:
      return ErrorCode::IOError;
  }
}

/// Does `work(session)`, writes out all that it has printed, and has the stores write what they have gathered.
template <class Work>
int runReporting(const std::string& operation, const Stores& stores, const Work& work) {
  Report report(operation);
  Output output;
  StoresInUse inUse(report);
  try {
    work(Session{report, output, stores, inUse});
    output.flush();
  } catch (const OutputFailure& failure) {
    report.failure(u"standard output", codeOf(failure), fl::i18n::to_ustring(failure.code().message()));
  }
  inUse.handOver();
  return report.exitCode();
}

std::string helpText(const CLI::App& app) {
  auto text = app.help();
  text.resize(text.find_last_not_of('\n') + 1);
  return text + "\n";
}

int print(const std::string& text) {
  return runReporting("help", Stores(std::nullopt), [&](const Session& session) { session.output.write(text); });
}

/// @param program  the name of the program, with the operation if one is known
int refuse(const std::string& program, const CLI::App& app, const std::string& reason) {
  std::cerr << program << ": " << printable(fl::i18n::to_ustring(reason)) << "\n\n" << helpText(app);
  return wrongUsage;
}

/// Parses the options, and goes on if that is well and they do not ask for information only.
int parse(const std::string& program, CLI::App& app, Arguments options, const std::function<int()>& proceed) {
  std::reverse(options.begin(), options.end());  // as the parser takes them
  try {
    app.parse(options);
  } catch (const CLI::CallForHelp&) {
    return print(helpText(app));
  } catch (const CLI::CallForVersion& version) {
    return print(std::string(version.what()) + "\n");
  } catch (const CLI::ParseError& error) {
    return refuse(program, app, error.what());
  }
  return proceed();
}

bool takesValue(const CLI::App& app, const std::string& argument) {
  const auto* option = app.get_option_no_throw(argument);
  return option != nullptr && option->get_items_expected_max() > 0;
}

/// Options and locations, told apart here and not by the parser, which would take "[x]" for a list and
/// "{}" for nothing at all. A value that an option takes stands in an argument of its own, or behind '='.
std::pair<Arguments, Arguments> separate(const CLI::App& app, const Arguments& arguments) {
  std::pair<Arguments, Arguments> separated;
  auto& [options, locations] = separated;
  bool onlyLocationsFollow = false;
  bool valueFollows = false;
  for (const auto& argument : arguments) {
    if (std::exchange(valueFollows, !onlyLocationsFollow && !valueFollows && takesValue(app, argument)))
      options.push_back(argument);
    else if (onlyLocationsFollow || argument.size() < 2 || argument.front() != '-')
      locations.push_back(argument);
    else if (argument == "--")
      onlyLocationsFollow = true;
    else
      options.push_back(argument);
  }
  return separated;
}

int runCommand(const Command& command, const Arguments& arguments, const std::optional<std::string>& configuration) {
  const auto program = "fstore " + command.name;
  CLI::App app(command.summary);
  app.formatter(std::make_shared<HelpText>(command.name + " " + command.usage));
  const auto action = command.declare(app);
  const auto [options, locations] = separate(app, arguments);
  return parse(program, app, options, [&, &locations = locations] {
    if (locations.size() < command.least)
      return refuse(program, app, "A location is missing");
    if (locations.size() > command.most)
      return refuse(program, app, "There is a location too many: '" + locations[command.most] + "'");
    try {
      const Stores stores(configuration);
      return runReporting(command.name, stores, [&](const Session& session) { action(session, locations); });
    } catch (const ArgumentFailure& failure) {
      std::cerr << program << ": " << printable(fl::i18n::to_ustring(failure.what())) << "\n";
      return wrongUsage;
    }
  });
}

/// The file that the stores' options are in, and the arguments behind it.
std::pair<std::optional<std::string>, Arguments> takeConfiguration(const Arguments& given) {
  constexpr std::string_view withValue = "--config=";
  if (given.empty())
    return {std::nullopt, given};
  if (given.front().starts_with(withValue))
    return {given.front().substr(withValue.size()), {given.begin() + 1, given.end()}};
  if (given.size() > 1 && (given.front() == "-c" || given.front() == "--config"))
    return {given[1], {given.begin() + 2, given.end()}};
  return {std::nullopt, given};
}

}  // namespace

int run(const std::vector<std::string>& given) {
  const auto all = commands();
  const auto taken = takeConfiguration(given);
  const auto& configuration = taken.first;
  const auto& arguments = taken.second;
  const auto chosen = std::find_if(all.begin(), all.end(), [&](const Command& command) {
    return !arguments.empty() && command.name == arguments.front();
  });
  if (chosen != all.end())
    return runCommand(*chosen, {arguments.begin() + 1, arguments.end()}, configuration);

  CLI::App app(programSummary);
  app.formatter(std::make_shared<HelpText>("[-c FILE] OPERATION [OPTION...] [LOCATION...]"));
  app.set_version_flag("--version", "fstore " FSTORE_VERSION);
  declareConfiguration(app);
  app.footer(locationHelp + "\n\"fstore OPERATION --help\" tells more. Exit codes: " + exitCodeHelp);
  // For building the program, not for using it.
  const auto* generate = app.add_option("--generate")->group("")->check(CLI::IsMember({"man", "completion"}));
  for (const auto& command : all)
    app.add_subcommand(command.name, command.summary)->group("Operations");
  const auto [options, locations] = separate(app, arguments);
  return parse("fstore", app, options, [&, &locations = locations] {
    if (generate->count() > 0 && locations.empty())
      return print(generate->results().back() == "man" ? manualPage(all, FSTORE_VERSION) : completionScript(all));
    return refuse("fstore", app,
                  locations.empty() ? "An operation is missing" : "There is no operation '" + locations.front() + "'");
  });
}

}  // namespace fstore
