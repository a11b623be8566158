#include <fstore/BackEnds.h>
#include <fstore/Capacity.h>
#include <fstore/Change.h>
#include <fstore/Checksum.h>
#include <fstore/Commands.h>
#include <fstore/Content.h>
#include <fstore/CopyAndMove.h>
#include <fstore/Find.h>
#include <fstore/Listing.h>
#include <fstore/MakeFolder.h>
#include <fstore/Removal.h>
#include <fstore/Size.h>
#include <fstore/Status.h>
#include <fstore/Time.h>
#include <fstore/Tree.h>
#include <fstore/TreeWalk.h>
#include <fstore/Watch.h>

#include <chrono>
#include <limits>
#include <map>
#include <optional>

namespace fstore {
namespace {

using foundation::storage::provider::ByteStreamTruncate;
using foundation::storage::provider::ReplacementPolicy;
using foundation::storage::provider::TransactionPolicy;
using Locations = std::vector<std::string>;

constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

CLI::Option* addFlag(CLI::App& app, const std::string& names, const std::string& description) {
  return app.add_flag(names)->disable_flag_override()->description(description);
}

/// An option with a value.
/// @param check  says what is wrong with a value; nothing where it is well
CLI::Option* addValue(CLI::App& app, const std::string& names, const std::string& value, const std::string& description,
                      const std::function<std::string(const std::string&)>& check = nullptr) {
  auto* option = app.add_option(names)->description(description)->option_text(value);
  return check ? option->check(check) : option;
}

CLI::Option* addJson(CLI::App& app) {
  return addFlag(app, "--json", "One JSON array; a name that is no text is null, its location has %XX for such bytes");
}

Format formatOf(const CLI::Option* json) { return json->count() > 0 ? Format::Json : Format::Text; }

/// As it was typed: what the parser makes of a value depends on its looks.
std::string valueOf(const CLI::Option* option) { return option->results().back(); }

std::string checkSize(const std::string& text) {
  return parseSize(text) ? "" : "'" + text + "' is no size, such as 100, 4K or 2MB";
}

std::string checkTime(const std::string& text) {
  return parseTime(text) ? "" : "'" + text + "' is no time, such as 2001-02-03T04:05:06Z";
}

MissingFiles missingOf(const CLI::Option* noCreate) {
  return noCreate->count() > 0 ? MissingFiles::Skip : MissingFiles::Create;
}

std::string checkSizeBound(const std::string& text) {
  return parseSizeBound(text) ? "" : "'" + text + "' is no size, such as 100, +4K or -2MB";
}

std::optional<std::string> optionalValueOf(const CLI::Option* option) {
  return option->count() > 0 ? std::optional(valueOf(option)) : std::nullopt;
}

CLI::Option* addDepth(CLI::App& app, const std::string& names) {
  return addValue(app, names, "DEPTH", "How deep to go")->check(CLI::Range(0, std::numeric_limits<int>::max()));
}

std::size_t depthOf(const CLI::Option* depth) {
  return depth->count() > 0 ? depth->as<std::size_t>() : TreeWalk::anyDepth;
}

std::optional<EntryKind> kindOf(const CLI::Option* type) {
  static const std::map<std::string, EntryKind> kinds{
      {"f", EntryKind::File}, {"d", EntryKind::Folder}, {"l", EntryKind::Link}};
  return type->count() > 0 ? std::optional(kinds.at(valueOf(type))) : std::nullopt;
}

ReplacementPolicy policyOf(const CLI::Option* noClobber) {
  return noClobber->count() > 0 ? ReplacementPolicy::NoClobber : ReplacementPolicy::Overwrite;
}

const std::map<std::string, ReplacementPolicy>& policies() {
  static const std::map<std::string, ReplacementPolicy> all{{"preserve", ReplacementPolicy::Preserve},
                                                            {"overwrite", ReplacementPolicy::Overwrite},
                                                            {"clobber", ReplacementPolicy::Clobber},
                                                            {"noclobber", ReplacementPolicy::NoClobber}};
  return all;
}

Action declareList(CLI::App& app) {
  const auto* details = addFlag(app, "-l,--long", "Type (- d l), writable (w), size in bytes, time (UTC), name");
  const auto* all = addFlag(app, "-a,--all", "Hidden entries, too");
  const auto* unsorted = addFlag(app, "-U,--unsorted", "In the store's order, without waiting for the last entry");
  const auto* json = addJson(app);
  return [=](const Session& session, const Locations& locations) {
    list(session, locations.empty() ? Locations{"."} : locations,
         {.withDetails = details->count() > 0,
          .withHidden = all->count() > 0,
          .sorted = unsorted->count() == 0,
          .format = formatOf(json)});
  };
}

Action declareTree(CLI::App& app) {
  const auto* all = addFlag(app, "-a,--all", "Hidden entries, too");
  const auto* folders = addFlag(app, "-d,--folders", "Folders only");
  const auto* depth = addDepth(app, "-L,--max-depth");
  const auto* json = addJson(app);
  return [=](const Session& session, const Locations& locations) {
    printTree(session, locations.empty() ? Locations{"."} : locations,
              {.withHidden = all->count() > 0,
               .foldersOnly = folders->count() > 0,
               .maxDepth = depthOf(depth),
               .format = formatOf(json)});
  };
}

Action declareFind(CLI::App& app) {
  app.footer("Links are printed, not followed.");
  const auto* name =
      addValue(app, "--name", "WILDCARD", "Names that match: * any text, ? one character, [a-z], [!a-z]");
  const auto* type =
      addValue(app, "--type", "TYPE", "f files, d folders, l links")->check(CLI::IsMember({"f", "d", "l"}));
  const auto* size =
      addValue(app, "--size", "[+-]SIZE", "Files of SIZE bytes, above (+) or below (-) it", checkSizeBound);
  const auto* newer =
      addValue(app, "--newer", "LOCATION|TIME", "Changed after a time (UTC), or after what is at a location");
  const auto* depth = addDepth(app, "--max-depth");
  const auto* json = addJson(app);
  return [=](const Session& session, const Locations& locations) {
    const auto bound = optionalValueOf(size);
    find(session, locations.front(),
         {.name = optionalValueOf(name),
          .kind = kindOf(type),
          .size = bound ? parseSizeBound(*bound) : std::nullopt,
          .newer = optionalValueOf(newer),
          .maxDepth = depthOf(depth),
          .format = formatOf(json)});
  };
}

Action declareStatus(CLI::App& app) {
  const auto* json = addJson(app);
  return [=](const Session& session, const Locations& locations) { printStatus(session, locations, formatOf(json)); };
}

Action declareCat(CLI::App&) {
  return [=](const Session& session, const Locations& locations) { printContent(session, locations); };
}

Action declarePut(CLI::App& app) {
  const auto* append = addFlag(app, "--append", "Add to the end of an existing file");
  return [=](const Session& session, const Locations& locations) {
    putContent(session, locations.front(),
               append->count() > 0 ? ByteStreamTruncate::PreserveExisting : ByteStreamTruncate::TruncateExisting);
  };
}

Verbosity verbosityOf(const CLI::Option* verbose, const CLI::Option* quiet) {
  if (quiet->count() > 0)
    return Verbosity::Quiet;
  return verbose->count() > 0 ? Verbosity::Verbose : Verbosity::Normal;
}

Action declareCopy(CLI::App& app) {
  app.footer(
      "A signal ends a copy between two files or in the middle of one. With --atomic nothing is half written then; "
      "otherwise the file that may be is reported. An archive is written with the files that are whole by then.");
  auto* noClobber = addFlag(app, "-n,--no-clobber", "Keep existing files; each is reported as a failure");
  const auto* policy = addValue(app, "--policy", "POLICY",
                                "What to do with existing files: preserve or noclobber as -n, overwrite or clobber "
                                "(unless told)")
                           ->check(CLI::IsMember({"preserve", "overwrite", "clobber", "noclobber"}))
                           ->excludes(noClobber);
  const auto* atomic = addFlag(app, "--atomic", "Let each file appear whole or not at all");
  const auto* verify = addFlag(app, "--verify", "Read each file and its copy back, and compare them");
  auto* jobs = addValue(app, "-j,--jobs", "N", "Copy so many files at once, 64 at most")->check(CLI::Range(1, 64));
  auto* verbose = addFlag(app, "-v,--verbose", "Print each file that is copied, and a summary");
  const auto* quiet = addFlag(app, "-q,--quiet", "No progress on a terminal, and no summary")->excludes(verbose);
  addFlag(app, "-r,-R,--recursive", "Nothing: folders are always copied whole");
  return [=](const Session& session, const Locations& locations) {
    copy(session, locations,
         {.policy = policy->count() > 0 ? policies().at(valueOf(policy)) : policyOf(noClobber),
          .transaction = atomic->count() > 0 ? TransactionPolicy::Atomic : TransactionPolicy::NonAtomic,
          .verification = verify->count() > 0 ? Verification::Compare : Verification::None,
          .threads = jobs->count() > 0 ? jobs->as<unsigned>() : 1,
          .verbosity = verbosityOf(verbose, quiet)});
  };
}

Action declareMove(CLI::App& app) {
  const auto* noClobber = addFlag(app, "-n,--no-clobber", "Keep what exists; it is reported as a failure");
  return [=](const Session& session, const Locations& locations) { move(session, locations, policyOf(noClobber)); };
}

Action declareRemove(CLI::App& app) {
  const auto* recursive = addFlag(app, "-r,-R,--recursive", "Folders with all they hold, too");
  return [=](const Session& session, const Locations& locations) {
    remove(session, locations, recursive->count() > 0 ? RemovalDepth::WholeFolders : RemovalDepth::FilesOnly);
  };
}

Action declareMakeFolder(CLI::App& app) {
  const auto* parents = addFlag(app, "-p,--parents", "Create missing parents; an existing folder is no failure");
  return [=](const Session& session, const Locations& locations) {
    makeFolders(session, locations, parents->count() > 0 ? MissingParents::Create : MissingParents::Fail);
  };
}

Action declareCapacity(CLI::App& app) {
  app.set_help_flag("--help", "Print this help message and exit");  // "-h" means something else here
  const auto* human = addFlag(app, "-h,--human-readable", "Sizes such as 1.5G, in powers of 1024");
  const auto* json = addJson(app);
  return [=](const Session& session, const Locations& locations) {
    printCapacity(session, locations, human->count() > 0 ? SizeStyle::Short : SizeStyle::Bytes, formatOf(json));
  };
}

Action declareTruncate(CLI::App& app) {
  const auto* size =
      addValue(app, "-s,--size", "SIZE", "In bytes, or with K, M, G (1024) or KB, MB, GB (1000)", checkSize)
          ->required();
  const auto* noCreate = addFlag(app, "-c,--no-create", "Pass over missing files");
  return [=](const Session& session, const Locations& locations) {
    truncate(session, locations, missingOf(noCreate), *parseSize(valueOf(size)));
  };
}

Action declareTouch(CLI::App& app) {
  const auto* noCreate = addFlag(app, "-c,--no-create", "Pass over missing files");
  const auto* time = addValue(app, "-d,--date", "TIME", "UTC, such as 2001-02-03T04:05:06.123456Z, not now", checkTime);
  return [=](const Session& session, const Locations& locations) {
    touch(session, locations, missingOf(noCreate), time->count() > 0 ? parseTime(valueOf(time)) : std::nullopt);
  };
}

Action declareChecksum(CLI::App& app) {
  const auto* json = addJson(app);
  return
      [=](const Session& session, const Locations& locations) { printChecksums(session, locations, formatOf(json)); };
}

Action declareBackEnds(CLI::App& app) {
  const auto* json = addJson(app);
  return [=](const Session& session, const Locations&) { printBackEnds(session, formatOf(json)); };
}

Action declareWatch(CLI::App& app) {
  const auto* recursive = addFlag(app, "-r,-R,--recursive", "The whole subtree");
  const auto* json = addFlag(app, "--json", "One JSON object a line");
  auto* poll = app.add_option("--poll")->description("Look every so many milliseconds, even if the store tells itself");
  poll->check(CLI::Range(1, 86'400'000))->option_text("MS");
  return [=](const Session& session, const Locations& locations) {
    std::optional<std::chrono::milliseconds> period;
    if (poll->count() > 0)
      period = std::chrono::milliseconds(poll->as<int>());
    watch(session, locations.front(),
          {.isRecursive = recursive->count() > 0,
           .period = period,
           .format = json->count() > 0 ? Format::Json : Format::Text});
  };
}

}  // namespace

std::span<const Command> commands() {
  static const std::vector<Command> all{
      {"ls", "[-l] [-a] [-U] [--json] [LOCATION...]", "List folders", 0, anyNumber, declareList},
      {"tree", "[-a] [-d] [-L DEPTH] [--json] [LOCATION...]", "Draw what folders hold, to any depth", 0, anyNumber,
       declareTree},
      {"find",
       "LOCATION [--name WILDCARD] [--type f|d|l] [--size [+-]SIZE] [--newer LOCATION|TIME] [--max-depth DEPTH] "
       "[--json]",
       "Print which files and folders below a location fit", 1, 1, declareFind},
      {"stat", "[--json] LOCATION...", "Show what is known about files and folders", 1, anyNumber, declareStatus},
      {"cat", "LOCATION...", "Write files to standard output", 1, anyNumber, declareCat},
      {"put", "[--append] LOCATION", "Write standard input to a file", 1, 1, declarePut},
      {"cp", "[-n|--policy POLICY] [--atomic] [--verify] [-j N] [-v|-q] SOURCE... DESTINATION",
       "Copy files and folders, following links", 2, anyNumber, declareCopy},
      {"mv", "[-n] SOURCE... DESTINATION", "Move or rename files and folders", 2, anyNumber, declareMove},
      {"rm", "[-r] LOCATION...", "Remove files, links and folders", 1, anyNumber, declareRemove},
      {"mkdir", "[-p] LOCATION...", "Create folders", 1, anyNumber, declareMakeFolder},
      {"touch", "[-c] [-d TIME] LOCATION...", "Set when files were last modified, creating missing ones", 1, anyNumber,
       declareTouch},
      {"truncate", "-s SIZE [-c] LOCATION...", "Cut files off, or fill them up with zeros", 1, anyNumber,
       declareTruncate},
      {"sum", "[--json] LOCATION...", "Print the SHA-256 of files", 1, anyNumber, declareChecksum},
      {"df", "[-h] [--json] LOCATION...", "Show how big stores are, and how full", 1, anyNumber, declareCapacity},
      {"watch", "[-r] [--poll MS] [--json] LOCATION", "Print changes until interrupted", 1, 1, declareWatch},
      {"backends", "[--json]", "Show which stores there are, and what each can do", 0, 0, declareBackEnds},
  };
  return all;
}

}  // namespace fstore
