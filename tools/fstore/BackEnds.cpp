#include <fstore/BackEnds.h>
#include <fstore/JsonArray.h>

#include <fl/i18n/Convert.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

namespace fstore {

namespace provider = foundation::storage::provider;
using foundation::storage::registry::Registration;
using foundation::storage::registry::Role;

namespace {

constexpr std::size_t titleWidth = 36;
constexpr std::size_t cellWidth = 12;

std::string inWords(provider::Capability capability) {
  std::ostringstream words;
  words << capability;
  return words.str();
}

std::string inWords(Role role) {
  return role == Role::Physical ? "scheme" : role == Role::Container ? "container" : "filter";
}

std::string padded(const std::string& text, std::size_t width) {
  return text + std::string(width - std::min(width - 1, text.size()), ' ');
}

/// A line of the table.
/// @param cell  the text for one registration
template <class Cell>
std::string row(const std::string& title, const std::vector<Registration>& registrations, const Cell& cell) {
  auto line = padded(title, titleWidth);
  for (const auto& registration : registrations)
    line += padded(cell(registration), cellWidth);
  line.resize(line.find_last_not_of(' ') + 1);
  return line + "\n";
}

std::string table(const std::vector<Registration>& registrations) {
  auto text = row("name", registrations, [](const Registration& r) { return fl::i18n::to_string(r.name); });
  text += row("role", registrations, [](const Registration& r) { return inWords(r.role); });
  for (const auto capability : provider::allCapabilities())
    text += row(inWords(capability), registrations, [&](const Registration& r) {
      return r.role == Role::Filter ? "-" : r.capabilities.contains(capability) ? "yes" : "no";
    });
  return text;
}

nlohmann::ordered_json jsonOf(const Registration& registration) {
  auto capabilities = nlohmann::ordered_json::array();
  for (const auto capability : registration.capabilities)
    capabilities.push_back(inWords(capability));
  return {{"name", fl::i18n::to_string(registration.name)},
          {"role", inWords(registration.role)},
          {"capabilities", std::move(capabilities)}};
}

}  // namespace

void printBackEnds(const Session& session, Format format) {
  const auto registrations = session.stores.registrations();
  JsonArray json(session.output, format);
  if (!json.isWritten())
    session.output.write(table(registrations));
  else
    for (const auto& registration : registrations)
      json.add(jsonOf(registration));
  json.end();
}

}  // namespace fstore
