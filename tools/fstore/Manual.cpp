#include <fstore/Manual.h>

#include <string_view>

namespace fstore {

const std::string programSummary = "Reach stored files and folders, wherever they live.";
const std::string locationHelp =
    "A location is a text such as file:///home/ann/notes, or a path. What an archive holds has the archive's location "
    "in its own, or its path: zip:file:///home/ann/letters.zip!/may.txt, zip:letters.zip!/may.txt.";
const std::string exitCodeHelp = "0 done, 1 something failed, 2 wrong usage, 129, 130 or 143 ended by a signal.";

namespace {

constexpr std::string_view archiveSchemes =
    "Archives are places like all others: zip:, tar: (also compressed), sevenzip: or, whatever it is, archive: stands "
    "before the location of the archive, and '!/' between that and what is in it. Archives in archives are named in "
    "the same "
    "way, as in zip:tar:file:///home/ann/old.tar!/letters.zip!/may.txt. With a path in place of the innermost location "
    "nothing is percent-escaped. Zip and tar archives can be written, and 'fstore mkdir zip:new.zip!/' makes one.";

constexpr std::string_view archiveCommit =
    "An operation writes an archive once, at its end, in place of the old one: the archive is the old one until then, "
    "and remains so where writing it fails. What has been done by then is in it, and nothing by half: not the file "
    "at which a copy failed, or which a signal has interrupted. A second signal, or one that the operation does not "
    "wait for, ends the program at once, with the old archive in its place.";

/// `text` as roff shows it literally, at whatever place in a line.
std::string escaped(std::string_view text) {
  std::string out = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text)
    if (c == '\\')
      out += "\\e";
    else if (c == '-')
      out += "\\-";  // not a hyphen: it is to be copied into a shell
    else
      out += c;
  return out;
}

std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }
std::string section(std::string_view title) { return ".SH " + std::string(title) + "\n"; }
std::string paragraph(std::string_view text) { return ".PP\n" + escaped(text) + "\n"; }

std::string manualOf(const CLI::Option& option) {
  std::string names;
  const auto add = [&](const std::string& name) { names += (names.empty() ? "" : ", ") + bold(name); };
  for (const auto& name : option.get_snames())
    add("-" + name);
  for (const auto& name : option.get_lnames())
    add("--" + name);
  const auto value = option.get_option_text();
  return ".TP\n" + names + (value.empty() ? "" : " " + italic(value)) + "\n" + escaped(option.get_description()) + "\n";
}

std::string manualOfConfiguration() {
  CLI::App app;
  declareConfiguration(app);
  std::string text;
  for (const auto* option : app.get_options())
    if (option != app.get_help_ptr())
      text += manualOf(*option);
  return text;
}

std::string manualOf(const Command& command) {
  CLI::App app;
  command.declare(app);
  std::string text = ".SS " + escaped(command.name) + "\n" + bold("fstore " + command.name) + " " +
                     escaped(command.usage) + "\n" + paragraph(command.summary + ".");
  if (const auto notes = app.get_footer(); !notes.empty())
    text += paragraph(notes);
  for (const auto* option : app.get_options())
    if (option != app.get_help_ptr())
      text += manualOf(*option);
  return text;
}

}  // namespace

void declareConfiguration(CLI::App& app) {
  app.add_option("-c,--config")
      ->description("Options of the stores, a section for each as in 'file { root /srv }': a .info or .json file")
      ->option_text("FILE");
}

std::string manualPage(std::span<const Command> commands, const std::string& version) {
  std::string text = ".TH FSTORE 1 \"\" \"fstore " + escaped(version) + "\" \"User Commands\"\n" + section("NAME") +
                     "fstore \\- reach stored files and folders, wherever they live\n" + section("SYNOPSIS") +
                     bold("fstore") + " [" + bold("-c") + " " + italic("FILE") + "] " + italic("OPERATION") + " [" +
                     italic("OPTION") + "...] [" + italic("LOCATION") + "...]\n" + section("DESCRIPTION") +
                     escaped(programSummary) + "\n" + paragraph(locationHelp) + section("OPTIONS") +
                     manualOfConfiguration() + section("OPERATIONS");
  for (const auto& command : commands)
    text += manualOf(command);
  return text + section("ARCHIVES") + escaped(archiveSchemes) + "\n" + paragraph(archiveCommit) +
         section("DIAGNOSTICS") + "Each error is one line on standard error:\n" +
         paragraph("fstore OPERATION: LOCATION: CODE: REASON") + section("\"EXIT STATUS\"") + escaped(exitCodeHelp) +
         "\n";
}

}  // namespace fstore
