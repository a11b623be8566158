#include "locations/Corpus.h"

#include <array>
#include <random>

namespace bench {
namespace {

using Engine = std::mt19937;

template <std::size_t N>
const char* oneOf(const std::array<const char*, N>& words, Engine& engine) {
  return words[engine() % N];
}

std::string digits(std::size_t value, std::size_t width) {
  auto text = std::to_string(value);
  return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::string localFile(std::size_t number, Engine& engine) {
  static constexpr std::array users{"anna", "bo", "carmen", "dirk", "elif", "femi"};
  static constexpr std::array folders{"Documents/Letters", "Pictures/Holidays", "src/simulation/results",
                                      "Mail/Archive"};
  return "file:///home/" + std::string(oneOf(users, engine)) + "/" + oneOf(folders, engine) + "/2024/" +
         digits(engine() % 12 + 1, 2) + "/" + digits(number / 500, 4) + "/item-" + digits(number, 8) + ".dat";
}

std::string object(std::size_t number, Engine& engine) {
  static constexpr std::array buckets{"sensor-readings", "invoices-eu", "build-artefacts"};
  return "s3://" + std::string(oneOf(buckets, engine)) +
         "/region=north/year=2024/week=" + digits(engine() % 52 + 1, 2) + "/chunk-" +
         digits(engine() % 100'000'000, 8) + "-" + digits(number, 8) + ".parquet";
}

std::string foreignFile(std::size_t number, Engine& engine) {
  static constexpr std::array folders{"Büro München", "Поездки", "写真 2024", "Œuvres complètes", "Ψηφιακό αρχείο"};
  return "file:///srv/shared/" + std::string(oneOf(folders, engine)) + "/" + oneOf(folders, engine) + "/Band " +
         digits(number / 300, 4) + "/Seite " + digits(number, 8) + ".tif";
}

std::string escapedBlanks(const std::string& text) {
  std::string out;
  for (const char c : text)
    c == ' ' ? out.append("%20") : out.append(1, c);
  return out;
}

std::string escapedBytes(const std::string& text) {
  constexpr char hex[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    byte < 0x80 ? out.append(1, c) : out.append({'%', hex[byte >> 4], hex[byte & 15]});
  }
  return out;
}

}  // namespace

const std::vector<Spelling>& locations() {
  static const auto made = [] {
    Engine engine(1);
    std::vector<Spelling> all;
    for (std::size_t i = 0; i < locationCount; ++i) {
      const auto shown = escapedBlanks(i % 3 == 0   ? localFile(i, engine)
                                       : i % 3 == 1 ? object(i, engine)
                                                    : foreignFile(i, engine));
      all.push_back({shown, escapedBytes(shown)});
    }
    return all;
  }();
  return made;
}

const std::vector<std::string>& names() {
  static const auto made = [] {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < locationCount; ++i) {
      const auto number = digits(i, 8);
      all.push_back(i % 5 == 4 ? (i % 2 == 0 ? "Rückfragen & 100% " + number + ".txt" : "draft #3 of letter " + number)
                    : i % 2 == 0 ? "quarterly-figures-" + number + ".csv"
                                 : "photograph_" + number + ".jpeg");
    }
    return all;
  }();
  return made;
}

}  // namespace bench
