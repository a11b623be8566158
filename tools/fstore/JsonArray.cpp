#include <fstore/JsonArray.h>

#include <nlohmann/json.hpp>

#include <utility>

namespace fstore {

void JsonArray::add(const nlohmann::ordered_json& element) {
  if (isWritten_)
    output_.write((std::exchange(isEmpty_, false) ? "[\n" : ",\n") + element.dump());
}

void JsonArray::end() {
  if (isWritten_)
    output_.write(isEmpty_ ? "[]\n" : "\n]\n");
}

}  // namespace fstore
