#include <fstore/Comparison.h>
#include <fstore/FileCopier.h>
#include <fstore/GrowthWatch.h>
#include <fstore/Refusal.h>
#include <fstore/Size.h>
#include <fstore/Target.h>
#include <fstore/Text.h>

#include <algorithm>
#include <exception>
#include <poll.h>
#include <unistd.h>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;
using provider::ExistenceTypeExtended;
using provider::StorageItem;
using provider::TransactionPolicy;

namespace {

/// What is copied between two questions whether to go on.
constexpr std::uint64_t blockSize = 4 * 1024 * 1024;
/// Files up to this size are copied so fast that nobody needs to see how.
constexpr std::uint64_t smallSize = 8 * 1024 * 1024;

std::optional<std::uint64_t> sizeOf(const StorageItem& file) {
  const auto attributes = file.getFileAttributes();
  return attributes.hasSizeAttribute() ? std::optional(attributes.getSize()) : std::nullopt;
}

/// A container is written as a whole, and never with half a file in it; and an object shows when all of it is there,
/// but a program that ends before leaves what it has sent in the store.
bool isWrittenWhole(const StorageItem& place) {
  return place.getLocation().hasInnerIRI() || physicalLocation(place.getLocation()).getScheme() == u"s3";
}

bool isLink(const StorageItem& item) {
  try {
    return item.existsExtended() == ExistenceTypeExtended::SymlinkToFile;
  } catch (const std::exception&) {  // copying to it will say why
    return false;
  }
}

std::string counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

FileCopier::FileCopier(const Session& session, const CopyOptions& options, const StopSignal& stop, Progress& progress)
    : session_(session),
      options_(options),
      stop_(stop),
      progress_(progress),
      plainCopies_(stop, session.report, [this] { sayLastWords(); }),
      jobs_(options.threads) {}

void FileCopier::add(const Item& source, const Item& place, const Check& check,
                     const std::optional<std::uint64_t>& size) {
  const auto job = [this, source, place, check, size] {
    if (isStopped())
      return;
    session_.report.attempt(source.getLocation(), [&] {
      check(source, place);
      copy(source, place, size);
    });
  };
  // Where a link leads, another job may be writing.
  const bool isAlone = isParallel() && isLink(place);
  if (isAlone)
    finish();
  jobs_.add(job);
  if (isAlone)
    finish();
}

void FileCopier::copy(const Item& source, const Item& place, std::optional<std::uint64_t> size) {
  if (!size)
    size = sizeOf(source);
  std::uint64_t shown = 0;
  if (options_.transaction == TransactionPolicy::Atomic || isWrittenWhole(place))
    shown = copyWatched(source, place, size.value_or(0));
  else
    shown = copyPlainly(source, place, size.value_or(0));
  progress_.add(size.value_or(0) - shown);
  if (options_.verification == Verification::Compare)
    requireSameContent(source, place, [this] { return isStopped(); });
  ++files_;
  bytes_ += size.value_or(0);
  if (options_.verbosity == Verbosity::Verbose)
    tell(source, place);
}

/// In one operation of the store's, which keeps more of a file than its bytes; so nothing can be asked meanwhile.
/// @return how much of it the progress has been told
std::uint64_t FileCopier::copyPlainly(const Item& source, const Item& place, std::uint64_t size) {
  std::optional<GrowthWatch> growth;
  if (progress_.isShown() && size > smallSize)
    growth.emplace(progress_, place, size);
  plainCopies_.run(place.getLocation(), [&] { source.copyFile(place, options_.policy); });
  return growth ? growth->end() : 0;
}

/// Atomically.
/// @return how much of it the progress has been told
std::uint64_t FileCopier::copyWatched(const Item& source, const Item& place, std::uint64_t size) {
  std::uint64_t shown = 0;
  const auto status = source.copyFile(
      place,
      {.replacementPolicy = options_.policy, .transactionPolicy = TransactionPolicy::Atomic, .interruptCallback = [&] {
         const auto step = std::min(blockSize, size - shown);
         shown += step;
         progress_.add(step);
         return isStopped() ? provider::InterruptSignal::Abort : provider::InterruptSignal::Continue;
       }});
  if (status == provider::TransactionStatus::Aborted)
    throw refusal(ErrorCode::IOError, place.getLocation(), u"Interrupted; nothing was written");
  return shown;
}

void FileCopier::tell(const Item& source, const Item& place) {
  const std::scoped_lock lock(outputMutex_);
  progress_.clear();
  session_.output.write(printable(source.getLocation().toString()) + " -> " +
                        printable(place.getLocation().toString()) + "\n");
  if (session_.output.isTerminal())
    session_.output.flush();
}

/// What has been copied is worth telling also where the program ends in the middle.
void FileCopier::sayLastWords() noexcept {
  try {
    // Somebody who waits for the reader of the output holds the lock; and the program is to end without that one.
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    const std::unique_lock lock(outputMutex_, std::try_to_lock);
    if (lock && poll(&output, 1, 0) == 1) {
      printSummary();
      session_.output.flush();
    }
  } catch (const std::exception&) {
    // Nobody reads any more.
  }
}

void FileCopier::countNothing() {
  files_ = 0;
  bytes_ = 0;
}

void FileCopier::printSummary() {
  const auto failures = session_.report.failures();
  if (options_.verbosity == Verbosity::Quiet || (options_.verbosity == Verbosity::Normal && failures == 0))
    return;
  progress_.clear();
  session_.output.write(counted(files_, "file") + " copied, " + counted(bytes_, "byte") + " (" + shortSize(bytes_) +
                        "), " + std::to_string(failures) + " failed\n");
}

}  // namespace fstore
