#pragma once

#include <foundation/storage/backend/archive/detail/Limits.h>

#include <boost/property_tree/ptree.hpp>

namespace foundation::storage::backend::archive::detail {

/// When changes are written.
enum class CommitTime { OnFlush, OnChange };

/// What a provider can be told.
struct Configuration {
  Limits limits;
  CommitTime commit = CommitTime::OnFlush;
};

/// Throws `InvalidOptionException`.
Configuration readConfiguration(boost::property_tree::ptree tree);

}  // namespace foundation::storage::backend::archive::detail
