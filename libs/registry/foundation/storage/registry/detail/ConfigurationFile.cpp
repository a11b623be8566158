#include <foundation/storage/registry/detail/ConfigurationFile.h>

#include <foundation/storage/registry/ConfigurationFileException.h>

#include <boost/property_tree/info_parser.hpp>
#include <boost/property_tree/json_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include <algorithm>
#include <fstream>
#include <istream>
#include <sstream>
#include <string>

namespace foundation::storage::registry::detail {
namespace {

using boost::property_tree::ptree;
using Parse = void (*)(std::istream&, ptree&);

Parse parserFor(const std::filesystem::path& file) {
  const auto extension = file.extension();
  if (extension == ".info")
    return [](std::istream& text, ptree& tree) { boost::property_tree::read_info(text, tree); };
  if (extension == ".json")
    return [](std::istream& text, ptree& tree) { boost::property_tree::read_json(text, tree); };
  throw ConfigurationFileException(file, 0, "a configuration's name ends in \".info\" or \".json\"");
}

// A folder can be opened, too, and reads as if it were an empty file unless the stream's state is asked.
std::string contentOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream content;
  if (in.is_open() && in.peek() != std::ifstream::traits_type::eof())
    content << in.rdbuf();
  if (!in.is_open() || in.bad() || content.fail())
    throw ConfigurationFileException(file, 0, "it cannot be read");
  return std::move(content).str();
}

/// The parsers call themselves for each level, so that a file of nothing but brackets would exhaust the stack.
void requireFlat(const std::filesystem::path& file, const std::string& content) {
  constexpr int maximum = 10'000;  // however they are paired: far more than any options have
  const auto isOpening = [](char character) { return character == '{' || character == '['; };
  if (std::count_if(content.begin(), content.end(), isOpening) > maximum)
    throw ConfigurationFileException(file, 0, "it holds too many brackets");
}

}  // namespace

ptree readConfigurationFile(const std::filesystem::path& file) {
  const auto parse = parserFor(file);
  const auto content = contentOf(file);
  requireFlat(file, content);
  std::istringstream text(content);
  ptree tree;
  try {
    parse(text, tree);
  } catch (const boost::property_tree::file_parser_error& failure) {
    const auto& included = failure.filename();
    throw ConfigurationFileException(included.empty() ? file : std::filesystem::path(included), failure.line(),
                                     failure.message());
  }
  return tree;
}

}  // namespace foundation::storage::registry::detail
