#include <foundation/storage/provider/Capability.h>

#include <array>
#include <cstddef>
#include <ostream>

namespace foundation::storage::provider {
namespace {

constexpr std::array<const char*, 16> texts{
    "writing",
    "appending",
    "seeking and reading while writing",
    "wildcards",
    "recursive listing",
    "recursive removal",
    "atomic copies of its own",
    "atomic replacement",
    "exclusive creation",
    "setting the last modification",
    "setting writable",
    "storage information",
    "a limit to its space",
    "names of any bytes",
    "huge files with gaps",
    "change events of its own",
};

static_assert(texts.size() == static_cast<std::size_t>(Capability::ChangeEvents) + 1);

}  // namespace

std::ostream& operator<<(std::ostream& out, const Capability& capability) {
  const auto number = static_cast<std::size_t>(capability);
  return number < texts.size() ? out << texts[number] : out;
}

std::vector<Capability> allCapabilities() {
  std::vector<Capability> all;
  for (std::size_t number = 0; number < texts.size(); ++number)
    all.push_back(static_cast<Capability>(number));
  return all;
}

}  // namespace foundation::storage::provider
