#pragma once

#include <foundation/storage/backend/archive/detail/Entry.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// A name without the parts that mean nothing: "./a//b" is "a/b".
std::string plainName(std::string_view name);

/// An entry that an archive calls a hard link.
struct HardLink {
  std::size_t number;
  std::string target;         ///< an entry's name
  bool hasContent = false;    ///< all the same, as tars may
  bool givesContent = false;  ///< to those before it, too, which have none: in a cpio only the last link has it
};

/// By the number of an entry without content of its own, the number of the one whose content it shares, which may
/// share it in turn; none where there is no such entry.
using SharedContent = std::unordered_map<std::size_t, std::optional<std::size_t>>;

/// Follows what is shared.
/// @return the entry that has the content; none where there is none
std::optional<std::size_t> contentOf(const SharedContent& shared, std::size_t number);

/// Makes an entry what it is a hard link to.
void becomeLinkTo(Entry& link, const Entry& content, std::size_t number);

/// Finds the entries whose content hard links share: of those that come before, the last one of the name.
/// @param entries  in which the links become what they lead to
/// @param links    by number
SharedContent resolve(std::vector<Entry>& entries, const std::vector<HardLink>& links);

}  // namespace foundation::storage::backend::archive::detail::library
