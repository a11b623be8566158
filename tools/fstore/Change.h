#pragma once

#include <fstore/Session.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace fstore {

enum class MissingFiles {
  Create,
  Skip,  ///< they are no failure
};

/// Sets when files and folders were last modified.
/// @param time  UTC; none: now, which a file that is created has anyhow
void touch(const Session& session, const std::vector<std::string>& arguments, MissingFiles missing,
           const std::optional<boost::posix_time::ptime>& time);

/// Cuts files off at `size` bytes, or fills them up with zeros to it.
void truncate(const Session& session, const std::vector<std::string>& arguments, MissingFiles missing,
              std::uint64_t size);

}  // namespace fstore
