#include <fstore/JsonArray.h>

#include <nlohmann/json.hpp>

#include <utility>

namespace fstore {

void JsonArray::add(const nlohmann::ordered_json& element) {
  if (isWritten_)
    addText(element.dump());
}

void JsonArray::addText(std::string_view element) {
  if (!isWritten_)
    return;
  output_.write(std::exchange(isEmpty_, false) ? "[\n" : ",\n");
  output_.write(element);
}

void JsonArray::end() {
  if (isWritten_)
    output_.write(isEmpty_ ? "[]\n" : "\n]\n");
}

}  // namespace fstore
