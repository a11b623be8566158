#include <foundation/storage/backend/support/Options.h>

#include <foundation/storage/backend/support/InvalidOptionException.h>

#include <charconv>
#include <limits>
#include <utility>

namespace foundation::storage::backend::support {

namespace {

constexpr std::uint64_t longestDuration = std::numeric_limits<std::int32_t>::max();  // in milliseconds

/// @param what  it counts
std::optional<std::uint64_t> countIn(const std::optional<std::string>& text, const std::string& key,
                                     const std::string& what) {
  if (!text)
    return std::nullopt;
  std::uint64_t count = 0;
  const auto* end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, count);
  if (error != std::errc() || stop != end)
    throw InvalidOptionException(key, "\"" + *text + "\" is no number" + what);
  return count;
}

}  // namespace

Options::Options(boost::property_tree::ptree tree) : tree_(std::move(tree)) {}
Options::~Options() = default;

std::optional<std::string> Options::takeText(const std::string& key) {
  taken_.insert(key);
  if (tree_.count(key) > 1)
    throw InvalidOptionException(key, "it is given more than once");
  const auto found = tree_.find(key);
  if (found == tree_.not_found())
    return std::nullopt;
  if (!found->second.empty())
    throw InvalidOptionException(key, "it takes one value, not options of its own");
  return found->second.data();
}

std::optional<std::uint64_t> Options::takeBytes(const std::string& key) {
  return countIn(takeText(key), key, " of bytes");
}

std::optional<std::uint64_t> Options::takeNumber(const std::string& key) { return countIn(takeText(key), key, {}); }

std::optional<std::chrono::milliseconds> Options::takeDuration(const std::string& key) {
  const auto count = countIn(takeText(key), key, " of milliseconds");
  if (!count)
    return std::nullopt;
  if (*count > longestDuration)
    throw InvalidOptionException(key, "it can be " + std::to_string(longestDuration) + " milliseconds at most");
  return std::chrono::milliseconds(static_cast<std::int64_t>(*count));
}

std::optional<bool> Options::takeFlag(const std::string& key) {
  const auto text = takeText(key);
  if (!text)
    return std::nullopt;
  if (*text != "true" && *text != "false")
    throw InvalidOptionException(key, "\"" + *text + "\" is neither true nor false");
  return *text == "true";
}

void Options::requireNoMore() const {
  if (!tree_.data().empty())
    throw InvalidOptionException(tree_.data(), "this is a value without a name");
  for (const auto& [key, value] : tree_)
    if (!taken_.contains(key))
      throw InvalidOptionException(key, "this store has no such option");
}

}  // namespace foundation::storage::backend::support
