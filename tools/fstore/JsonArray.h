#pragma once

#include <fstore/Format.h>
#include <fstore/Output.h>

#include <nlohmann/json_fwd.hpp>

#include <string_view>

namespace fstore {

/// One JSON array on standard output, written element by element, each on a line of its own. In other formats it
/// writes nothing.
///
/// In its elements, "location" is the text of a location: it names any file, whatever the bytes of its name, since
/// those that are no text are written %80 to %FF. A "name" that is no text is null.
class JsonArray {
 public:
  JsonArray(Output& output, Format format) : output_(output), isWritten_(format == Format::Json) {}

  bool isWritten() const { return isWritten_; }
  /// Throws `OutputFailure`; so does `end()`.
  void add(const nlohmann::ordered_json& element);
  /// The same for an element that is JSON already.
  void addText(std::string_view element);
  /// To be called last, however many elements there were.
  void end();

 private:
  Output& output_;
  bool isWritten_;
  bool isEmpty_ = true;
};

}  // namespace fstore
