#pragma once

#include <boost/property_tree/ptree_fwd.hpp>

#include <filesystem>

namespace foundation::storage::registry::detail {

/// The tree in a file, whose name says in which format. Throws `ConfigurationFileException`.
boost::property_tree::ptree readConfigurationFile(const std::filesystem::path& file);

}  // namespace foundation::storage::registry::detail
