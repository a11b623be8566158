#pragma once

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace foundation::storage::backend::archive::detail {

enum class EntryKind : std::uint8_t {
  File,
  Folder,
  Link,     ///< a symbolic one
  Special,  ///< a device, a pipe, a socket
};

/// What an archive says of one of its entries; nothing of it is checked.
struct Entry {
  std::string name;  ///< the bytes as they are stored
  EntryKind kind = EntryKind::File;
  bool isEncrypted = false;
  std::uint32_t permissions = 0644;       ///< the twelve lowest bits of a mode; see chmod(2)
  std::optional<std::uint64_t> size;      ///< of a file, in bytes; not every format tells
  boost::posix_time::ptime lastModified;  ///< UTC; `not_a_date_time` where the archive does not tell
  std::optional<std::string> linkTarget;  ///< of a link, where the archive tells without reading the content
  std::optional<std::size_t> hardLinkTo;  ///< the number of an earlier entry, whose content this file shares
};

}  // namespace foundation::storage::backend::archive::detail
