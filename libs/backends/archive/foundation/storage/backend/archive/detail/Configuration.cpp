#include <foundation/storage/backend/archive/detail/Configuration.h>

#include <foundation/storage/backend/support/InvalidOptionException.h>
#include <foundation/storage/backend/support/Options.h>

#include <utility>

namespace foundation::storage::backend::archive::detail {

namespace {

using support::InvalidOptionException;

CommitTime takeCommitTime(support::Options& options) {
  const auto text = options.takeText("commit").value_or("on-flush");
  if (text != "on-flush" && text != "on-change")
    throw InvalidOptionException("commit", "\"" + text + "\" is neither on-flush nor on-change");
  return text == "on-change" ? CommitTime::OnChange : CommitTime::OnFlush;
}

/// @param least  the smallest limit that makes sense
void takeLimit(support::Options& options, const char* key, std::uint64_t least, std::uint64_t& limit) {
  const auto number = options.takeBytes(key);
  if (number && *number < least)
    throw InvalidOptionException(key, "it has to be " + std::to_string(least) + " at least");
  limit = number.value_or(limit);
}

}  // namespace

Configuration readConfiguration(boost::property_tree::ptree tree) {
  support::Options options(std::move(tree));
  Configuration configuration;
  auto& limits = configuration.limits;
  takeLimit(options, "max-entries", 0, limits.entries);
  takeLimit(options, "max-total-size", 0, limits.totalSize);
  takeLimit(options, "max-ratio", 1, limits.ratio);
  takeLimit(options, "max-nesting", 1, limits.nesting);
  configuration.commit = takeCommitTime(options);
  options.requireNoMore();
  return configuration;
}

}  // namespace foundation::storage::backend::archive::detail
