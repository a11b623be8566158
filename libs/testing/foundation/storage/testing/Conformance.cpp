#include <foundation/storage/testing/Conformance.h>

#include <foundation/storage/testing/detail/Check.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <iostream>
#include <set>
#include <stdexcept>

namespace foundation::storage::testing {
namespace {

using detail::Check;
using detail::CheckGroup;

const std::vector<CheckGroup>& allGroups() {
  static const std::vector<CheckGroup> groups{
      detail::existenceChecks(),     detail::createChecks(),      detail::readChecks(),
      detail::writeChecks(),         detail::appendChecks(),      detail::seekChecks(),
      detail::truncateChecks(),      detail::listChecks(),        detail::wildcardChecks(),
      detail::recursiveListChecks(), detail::nameChecks(),        detail::attributeChecks(),
      detail::timeChecks(),          detail::writableChecks(),    detail::copyChecks(),
      detail::moveChecks(),          detail::removeChecks(),      detail::transactionChecks(),
      detail::spaceChecks(),         detail::hugeFileChecks(),    detail::concurrencyChecks(),
      detail::pollingChecks(),       detail::changeEventChecks(), detail::locationChecks(),
      detail::refusalChecks(),       detail::readOnlyChecks(),
  };
  return groups;
}

bool concerns(const BackEnd& backEnd, const CheckGroup& group, const Check& check) {
  const auto has = [&](Capability capability) { return backEnd.capabilities.contains(capability); };
  return std::all_of(group.needs.begin(), group.needs.end(), has) &&
         std::all_of(check.needs.begin(), check.needs.end(), has) &&
         std::none_of(check.lacks.begin(), check.lacks.end(), has);
}

std::string fullName(const CheckGroup& group, const Check& check) { return std::string(group.name) + "." + check.name; }

class CheckTest final : public ::testing::Test {
 public:
  CheckTest(const BackEnd& backEnd, const Check& check) : backEnd_(backEnd), check_(check) {}

 private:
  void TestBody() override {
    detail::Store store(backEnd_);
    check_.run(store);
  }

  const BackEnd& backEnd_;
  const Check& check_;
};

void requireComplete(const BackEnd& backEnd) {
  const auto require = [&](bool condition, const char* what) {
    if (!condition)
      throw std::invalid_argument("The back end \"" + backEnd.name + "\" " + what);
  };
  const auto isPlain = [](unsigned char character) { return std::isalnum(character) != 0; };
  const bool isNamed = !backEnd.name.empty() && std::all_of(backEnd.name.begin(), backEnd.name.end(), isPlain);
  require(isNamed, "needs a name of letters and digits.");
  require(backEnd.makeEmptyFolder != nullptr, "needs makeEmptyFolder.");
  require(backEnd.capabilities.contains(Capability::Write) || backEnd.makeFolderWith, "needs makeFolderWith.");
  require(!backEnd.capabilities.contains(Capability::LimitedSpace) || backEnd.makeSmallFolder,
          "needs makeSmallFolder.");
}

void requireKnownDeviations(const BackEnd& backEnd) {
  auto unknown = backEnd.deviations;
  for (const auto& group : allGroups())
    for (const auto& check : group.checks)
      if (concerns(backEnd, group, check))
        unknown.erase(fullName(group, check));
  if (!unknown.empty())
    throw std::invalid_argument("The back end \"" + backEnd.name +
                                "\" deviates from a check that it is not put to: " + unknown.begin()->first);
}

void requireDistinctNames(const std::vector<BackEnd>& backEnds) {
  std::set<std::string> names;
  for (const auto& backEnd : backEnds)
    if (!names.insert(backEnd.name).second)
      throw std::invalid_argument("Two back ends are named \"" + backEnd.name + "\".");
}

void registerCheck(const std::shared_ptr<const BackEnd>& backEnd, const CheckGroup& group, const Check& check) {
  const auto suite = backEnd->name + "/" + group.name;
  ::testing::RegisterTest(suite.c_str(), check.name, nullptr, nullptr, __FILE__, __LINE__,
                          [backEnd, &check]() -> ::testing::Test* { return new CheckTest(*backEnd, check); });
}

std::size_t countChecks(const BackEnd& backEnd, const CheckGroup& group) {
  const auto isRun = [&](const Check& check) {
    return concerns(backEnd, group, check) && !backEnd.deviations.contains(fullName(group, check));
  };
  return static_cast<std::size_t>(std::count_if(group.checks.begin(), group.checks.end(), isRun));
}

/// @param cell  gives what stands in the row for a back end
std::string inWords(Capability capability) {
  std::ostringstream words;
  words << capability;
  return words.str();
}

template <class Cell>
void writeRow(std::ostream& out, const std::string& title, const std::vector<BackEnd>& backEnds, const Cell& cell) {
  out << "| " << title << " |";
  for (const auto& backEnd : backEnds)
    out << ' ' << cell(backEnd) << " |";
  out << '\n';
}

void writeDeviations(std::ostream& out, const std::vector<BackEnd>& backEnds) {
  for (const auto& backEnd : backEnds)
    for (const auto& [check, reason] : backEnd.deviations)
      out << "\n- " << backEnd.name << " deviates in " << check << ": " << reason << '\n';
}

}  // namespace

void registerConformance(const BackEnd& backEnd) {
  requireComplete(backEnd);
  requireKnownDeviations(backEnd);
  const auto shared = std::make_shared<const BackEnd>(backEnd);
  for (const auto& group : allGroups())
    for (const auto& check : group.checks)
      if (concerns(backEnd, group, check) && !backEnd.deviations.contains(fullName(group, check)))
        registerCheck(shared, group, check);
}

void writeCapabilities(std::ostream& out, const std::vector<BackEnd>& backEnds) {
  writeRow(out, "", backEnds, [](const BackEnd& backEnd) { return backEnd.name; });
  writeRow(out, "---", backEnds, [](const BackEnd&) { return "---"; });
  for (const auto capability : provider::allCapabilities())
    writeRow(out, inWords(capability), backEnds,
             [&](const BackEnd& backEnd) { return backEnd.capabilities.contains(capability) ? "yes" : "no"; });
  for (const auto& group : allGroups())
    writeRow(out, std::string("checks: ") + group.name, backEnds,
             [&](const BackEnd& backEnd) { return countChecks(backEnd, group); });
  writeRow(out, "checks in all", backEnds, [](const BackEnd& backEnd) {
    std::size_t sum = 0;
    for (const auto& group : allGroups())
      sum += countChecks(backEnd, group);
    return sum;
  });
  writeDeviations(out, backEnds);
}

int runConformance(int argc, char** argv, const std::vector<BackEnd>& backEnds) {
  requireDistinctNames(backEnds);
  ::testing::InitGoogleTest(&argc, argv);
  if (argc > 1 && std::strcmp(argv[1], "--capabilities") == 0) {
    writeCapabilities(std::cout, backEnds);
    return 0;
  }
  for (const auto& backEnd : backEnds)
    registerConformance(backEnd);
  const int result = RUN_ALL_TESTS();
  if (GTEST_FLAG_GET(filter) == "*" && !GTEST_FLAG_GET(list_tests))
    writeCapabilities(std::cout << '\n', backEnds);
  return result;
}

}  // namespace foundation::storage::testing
