#include <foundation/storage/backend/s3/detail/wire/CredentialsFile.h>

#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>

namespace foundation::storage::backend::s3::detail::wire {

namespace {

using boost::property_tree::ptree;

ptree read(const std::filesystem::path& file) try {
  ptree tree;
  boost::property_tree::read_ini(file.string(), tree);
  return tree;
} catch (const boost::property_tree::ini_parser_error& failure) {
  throw MalformedCredentials(file, failure.line(), failure.message());
}

}  // namespace

MalformedCredentials::MalformedCredentials(const std::filesystem::path& file, unsigned long line,
                                           const std::string& reason)
    : std::runtime_error(file.string() + (line == 0 ? "" : ":" + std::to_string(line)) + ": " + reason) {}

std::optional<Credentials> readCredentialsFile(const std::filesystem::path& file, const std::string& profile) {
  const auto tree = read(file);
  // Not by a path of the tree: a profile's name may contain its separator.
  const auto section = tree.find(profile);
  if (section == tree.not_found() || section->second.empty())
    return std::nullopt;
  const auto valueOf = [&section = section->second](const char* key) { return section.get(key, std::string()); };
  const auto required = [&](const char* key) {
    auto value = valueOf(key);
    if (value.empty())
      throw MalformedCredentials(file, 0, "the profile \"" + profile + "\" has no " + key);
    return value;
  };
  return Credentials{required("aws_access_key_id"), required("aws_secret_access_key"), valueOf("aws_session_token")};
}

}  // namespace foundation::storage::backend::s3::detail::wire
