#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Capability.h>
#include <foundation/storage/registry/Registration.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::testing {

/// Writes a small table in Markdown of what the stores of a registry can do: schemes that can do the same share a
/// column, and what the same schemes can do shares a row.
class Summary {
 public:
  explicit Summary(const std::vector<registry::Registration>& registrations) {
    for (const auto& registration : registrations)
      if (registration.role != registry::Role::Filter)
        add(columns_, registration.capabilities, "`" + fl::i18n::to_string(registration.name) + "`");
    sortByCount(columns_, [](const auto& capabilities) { return capabilities.size(); });
    for (const auto capability : provider::allCapabilities())
      add(rows_, answersFor(capability), inWords(capability));
    sortByCount(rows_, [](const auto& answers) { return std::count(answers.begin(), answers.end(), true); });
  }

  void write(std::ostream& out) const {
    out << "| |";
    for (const auto& [capabilities, schemes] : columns_)
      out << ' ' << schemes << " |";
    out << "\n|---|";
    for (std::size_t column = 0; column < columns_.size(); ++column)
      out << "---|";
    for (const auto& [answers, words] : rows_) {
      out << "\n| " << words << " |";
      for (const bool answer : answers)
        out << (answer ? " yes |" : " no |");
    }
    out << '\n';
  }

 private:
  /// What is alike, and the names of all that are, separated by commas.
  template <class Key>
  using Groups = std::vector<std::pair<Key, std::string>>;

  template <class Key>
  static void add(Groups<Key>& groups, const Key& key, const std::string& name) {
    for (auto& [known, names] : groups)
      if (known == key) {
        names += ", " + name;
        return;
      }
    groups.emplace_back(key, name);
  }

  /// What counts most comes first.
  template <class Key, class Count>
  static void sortByCount(Groups<Key>& groups, const Count& count) {
    std::stable_sort(groups.begin(), groups.end(),
                     [&](const auto& one, const auto& other) { return count(one.first) > count(other.first); });
  }

  std::vector<bool> answersFor(provider::Capability capability) const {
    std::vector<bool> answers;
    for (const auto& [capabilities, schemes] : columns_)
      answers.push_back(capabilities.contains(capability));
    return answers;
  }

  static std::string inWords(provider::Capability capability) {
    std::ostringstream words;
    words << capability;
    return words.str();
  }

  Groups<provider::Capabilities> columns_;
  Groups<std::vector<bool>> rows_;
};

}  // namespace foundation::storage::testing
