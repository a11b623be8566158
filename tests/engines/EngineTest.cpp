// Object stores as many processes use them, some of which are killed, and one that stops answering. To be run under
// withEngine.

#include "regression/Killing.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/s3/UnfinishedUploads.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/property_tree/ptree.hpp>

#include <fstream>
#include <map>
#include <optional>
#include <vector>

namespace foundation::storage::testing {
namespace {

using namespace provider;

using Options = std::map<std::string, std::string>;

std::string environment(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  if (value == nullptr)
    throw std::runtime_error(name + " is not set: run this by tests/engines/withEngine");
  return value;
}

/// A folder in the store, by a provider of its own.
StorageItem folder(const std::string& name, const Options& options = {}) {
  boost::property_tree::ptree configuration;
  configuration.put("s3.endpoint", environment("FOUNDATION_S3_ENDPOINT"));
  configuration.put("s3.region", environment("FOUNDATION_S3_REGION"));
  for (const auto& [key, value] : options)
    configuration.put("s3." + key, value);
  auto registry = registry::makeDefaultRegistry();
  registry.configure(configuration);
  return registry.item(fl::i18n::to_ustring("s3://" + environment("FOUNDATION_S3_BUCKET") + "/" + name));
}

StorageItem child(const StorageItem& parent, const std::string& name) { return {parent, fl::i18n::to_ustring(name)}; }

template <class Stream>
void writeAll(Stream& stream, const std::string& content) {
  for (std::size_t done = 0; done < content.size();)
    done +=
        static_cast<std::size_t>(stream.write(content.data() + done, static_cast<std::int64_t>(content.size() - done)));
}

std::string read(const StorageItem& file) {
  const auto stream = file.openReadOnlyStream();
  std::string content, buffer(1 << 20, '\0');
  for (std::int64_t got = 0; (got = stream->read(buffer.data(), static_cast<std::int64_t>(buffer.size()))) > 0;)
    content.append(buffer, 0, static_cast<std::size_t>(got));
  return content;
}

/// Throws away the uploads of all who came before.
std::size_t sweep(const StorageItem& folder) {
  const auto later = boost::posix_time::microsec_clock::universal_time() + boost::posix_time::hours(1);
  return backend::s3::abortUnfinishedUploads(folder, later);
}

// --- Exclusive creation ---

/// How a process ends that tries to create a file.
enum class Outcome { Created, Existed, Failed };

Outcome create(const StorageItem& file) {
  try {
    file.createFile();
    return Outcome::Created;
  } catch (const Exception& failure) {
    if (failure.getErrorCode() == ErrorCode::ResourceAlreadyExists)
      return Outcome::Existed;
    std::cerr << failure.what() << std::endl;
    return Outcome::Failed;
  }
}

/// What each of them does: connects to the store, says that it is ready, and creates the file once it may.
[[noreturn]] void takePart(const std::string& name, const Pipe& ready, const Pipe& start) {
  auto outcome = Outcome::Failed;
  try {
    const auto file = child(folder("race"), name);
    if (!file.fileExists() && write(ready.input(), "!", 1) == 1) {
      start.waitForByte();
      outcome = create(file);
    }
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << std::endl;
  }
  _exit(static_cast<int>(outcome));
}

Outcome outcomeOf(pid_t process) {
  int status = 0;
  EXPECT_EQ(retried([&] { return waitpid(process, &status, 0); }), process);
  return WIFEXITED(status) ? static_cast<Outcome>(WEXITSTATUS(status)) : Outcome::Failed;
}

/// @return how many of `count` processes ended how
std::map<Outcome, int> race(const std::string& name, std::size_t count) {
  const Pipe ready, start;
  std::vector<pid_t> processes;
  for (std::size_t number = 0; number < count; ++number)
    if (processes.push_back(fork()); processes.back() == 0)
      takePart(name, ready, start);
  for (std::size_t number = 0; number < count; ++number)
    ready.waitForByte();
  const std::string go(count, '!');
  EXPECT_EQ(write(start.input(), go.data(), count), static_cast<ssize_t>(count));
  std::map<Outcome, int> outcomes;
  for (const auto process : processes)
    ++outcomes[outcomeOf(process)];
  return outcomes;
}

TEST(Engine, OneOfTwelveProcessesCreatesTheFile) {
  const auto place = folder("race");
  place.createFolder();
  for (int round = 0; round < 25; ++round) {
    const std::map<Outcome, int> expected{{Outcome::Created, 1}, {Outcome::Existed, 11}};
    ASSERT_EQ(race(std::to_string(round), 12), expected) << "in round " << round;
  }
  place.removeFolderRecursively();
}

// --- Kills ---

constexpr std::size_t contentSize = 12 << 20;  // three parts

std::string contentOf(std::size_t generation) {
  std::mt19937_64 random(generation);
  std::string content = std::to_string(generation) + "\n";
  while (content.size() < contentSize) {
    const auto number = random();
    content.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  return content;
}

/// Which one it is by its first line.
std::size_t generationOf(const std::string& content) { return content.empty() ? 0 : std::stoul(content); }

/// The content at one moment: what a killed writer has asked for may be done only now, while it is read.
std::string readOnceItRests(const StorageItem& file) {
  for (;;)
    try {
      return read(file);
    } catch (const ByteStreamFailure& failure) {
      if (failure.getErrorCode() != ErrorCode::ResourceInUse)
        throw;
    }
}

/// Writes one generation after the other, from the one behind `generation` on.
class Writer {
 public:
  explicit Writer(std::size_t generation) : generation_(generation) {}

  void writeNext() {
    if (!file_)  // only now, so that it is the process to be killed that connects
      file_ = child(folder("kills", {{"part-size", "5242880"}}), "file");
    const auto stream = file_->openTransactionalStream({});
    writeAll(*stream, contentOf(++generation_));
    stream->close(StreamClosePolicy::Commit);
  }

 private:
  std::size_t generation_;
  std::optional<StorageItem> file_;
};

TEST(Engine, KilledWritersLeaveTheOldOrTheNewObject) {
  constexpr int kills = 60;
  const auto place = folder("kills");
  const auto file = child(place, "file");
  place.createFolder();
  file.createFile();
  std::mt19937 random(chooseSeed());
  std::size_t generation = 0, leftovers = 0, longestDelay = 500'000;
  for (int round = 1; round <= kills; ++round) {
    SCOPED_TRACE(round);
    Writer writer(generation);
    ASSERT_TRUE(startAndKill([&] { writer.writeNext(); }, draw(random, longestDelay)));
    const auto content = readOnceItRests(file);
    ASSERT_GE(generationOf(content), generation);
    generation = generationOf(content);
    ASSERT_TRUE(content == (generation == 0 ? "" : contentOf(generation))) << "of generation " << generation;
    leftovers += sweep(place);
    if (round % 10 == 0 && generation == 0)
      longestDelay = 999'999;  // for slow machines, and sanitizers
  }
  std::cout << kills << " kills: " << leftovers << " left an upload; " << generation << " commits before them\n";
  sweep(place);  // what was begun behind the last one, too
  EXPECT_EQ(sweep(place), 0u);
  EXPECT_GT(leftovers, 0u) << "no kill came within an upload";
  EXPECT_GT(generation, 0u) << "no kill came after a commit";
  place.removeFolderRecursively();
}

// --- A store that stops answering ---

/// For as long as this lives, the store takes connections, and says nothing.
class Silence {
 public:
  Silence() : gateway_(pidOf(environment("FOUNDATION_ENGINE") + "/gateway.pid")) { kill(gateway_, SIGSTOP); }
  ~Silence() { kill(gateway_, SIGCONT); }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  static pid_t pidOf(const std::string& file) {
    pid_t pid = 0;
    if (!(std::ifstream(file) >> pid) || pid <= 1)
      throw std::runtime_error("no process in " + file);
    return pid;
  }

  pid_t gateway_;
};

struct Operation {
  const char* name;
  std::function<void(const StorageItem& place)> work;
};

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all{
      {"exists", [](const auto& place) { EXPECT_TRUE(child(place, "file").fileExists()); }},
      {"list", [](const auto& place) { EXPECT_TRUE(place.listAll(u"")->hasNext()); }},
      {"read", [](const auto& place) { EXPECT_EQ(read(child(place, "file")), "content"); }},
      {"attributes", [](const auto& place) { child(place, "file").getFileAttributes(); }},
      {"write",
       [](const auto& place) {
         const auto stream = child(place, "written").openStream({});
         writeAll(*stream, "more");
         stream->close();
       }},
      {"commit",
       [](const auto& place) {
         const auto stream = child(place, "committed").openTransactionalStream({});
         writeAll(*stream, std::string(6 << 20, 'x'));
         stream->close(StreamClosePolicy::Commit);
       }},
      {"copy",
       [](const auto& place) { child(place, "file").copyFile(child(place, "copy"), ReplacementPolicy::Overwrite); }},
      {"create folder", [](const auto& place) { child(place, "new/folder").createFolderRecursive(); }},
      {"remove", [](const auto& place) { child(place, "copy").removeFile(); }},
  };
  return all;
}

/// @return what it fails with; nothing where it does not
std::optional<ErrorCode> failureOf(const Operation& operation, const StorageItem& place) {
  try {
    operation.work(place);
    return std::nullopt;
  } catch (const Exception& failure) {
    return failure.getErrorCode();
  } catch (const ByteStreamFailure& failure) {
    return failure.getErrorCode();
  }
}

TEST(Engine, FailsWhileTheStoreIsSilentAndWorksAgainAfterwards) {
  const auto place =
      folder("silence",
             {{"operation-timeout", "2000"}, {"idle-timeout", "1000"}, {"attempts", "2"}, {"part-size", "5242880"}});
  place.createFolder();
  const auto writing = child(place, "file").openTransactionalStream({});
  writeAll(*writing, "content");
  writing->close(StreamClosePolicy::Commit);
  {
    const Silence silence;
    for (const auto& operation : operations())
      EXPECT_EQ(failureOf(operation, place), ErrorCode::IOError) << operation.name;
  }
  for (const auto& operation : operations())
    EXPECT_EQ(failureOf(operation, place), std::nullopt) << operation.name;
  sweep(place);  // what could not be aborted while nobody listened
  place.removeFolderRecursively();
}

}  // namespace
}  // namespace foundation::storage::testing
