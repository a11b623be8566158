#include <fstore/Completion.h>

#include <string_view>
#include <vector>

namespace fstore {
namespace {

/// What stands before the lists of words.
constexpr std::string_view head = R"(# bash completion for fstore

_fstore() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words= first=1
  [[ ${COMP_WORDS[1]} != -c && ${COMP_WORDS[1]} != --config ]] || first=3
  COMPREPLY=()
  # "--option=value" comes as three words.
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  case $((COMP_CWORD - first + 1)):${COMP_WORDS[first]}:$previous:$current in
)";

/// And behind them: where no case fits, readline completes paths.
constexpr std::string_view tail = R"(    *) return ;;
  esac
  compopt +o default
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -o default -F _fstore fstore
)";

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const auto& name : option.get_snames())
    names.push_back("-" + name);
  for (const auto& name : option.get_lnames())
    names.push_back("--" + name);
  return names;
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (const auto& word : words)
    text.append(text.empty() ? "" : separator).append(word);
  return text;
}

/// The values that an option takes, if they are few: the parser shows them as "{a,b}".
std::vector<std::string> valuesOf(const CLI::Option& option) {
  const auto type = option.get_type_name();
  const auto begin = type.find('{');
  if (begin == std::string::npos)
    return {};
  return CLI::detail::split(type.substr(begin + 1, type.find('}', begin) - begin - 1), ',');
}

/// A case for each name of an option, where what follows it is no path.
std::string casesOf(const Command& command, const CLI::Option& option) {
  const bool takesLocation = option.get_option_text().find("LOCATION") != std::string::npos;
  if (option.get_items_expected_max() == 0 || takesLocation)
    return "";
  std::vector<std::string> patterns;
  for (const auto& name : namesOf(option))
    patterns.push_back("*:" + command.name + ":" + name + ":*");
  return "    " + joined(patterns, " | ") + ") words=\"" + joined(valuesOf(option), " ") + "\" ;;\n";
}

std::string casesOf(const Command& command) {
  CLI::App app;
  command.declare(app);
  std::string values;
  std::vector<std::string> names;
  for (const auto* option : app.get_options()) {
    values += casesOf(command, *option);
    for (const auto& name : namesOf(*option))
      names.push_back(name);
  }
  return values + "    *:" + command.name + ":*:-*) words=\"" + joined(names, " ") + "\" ;;\n";
}

}  // namespace

std::string completionScript(std::span<const Command> commands) {
  std::vector<std::string> operations;
  std::string cases;
  for (const auto& command : commands) {
    operations.push_back(command.name);
    cases += casesOf(command);
  }
  return std::string(head) + "    1:*) words=\"" + joined(operations, " ") + " --config --help --version\" ;;\n" +
         cases + std::string(tail);
}

}  // namespace fstore
