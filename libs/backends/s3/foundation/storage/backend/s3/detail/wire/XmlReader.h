#pragma once

#include <pugixml.hpp>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace foundation::storage::backend::s3::detail::wire {

/// A document of the store. Elements are found by their local names, whatever the prefix of their namespace is: stores
/// do not agree on it, nor on giving one.
class XmlReader {
 public:
  /// Throws `MalformedDocument` where `body` is no XML, cut off, or has another root than one of these.
  XmlReader(std::string_view body, std::initializer_list<std::string_view> roots);

  pugi::xml_node root() const { return document_.document_element(); }

 private:
  pugi::xml_document document_;
};

/// Without the prefix of its namespace.
std::string_view localName(pugi::xml_node element);

/// The first child of that name; a null node where there is none.
pugi::xml_node childOf(pugi::xml_node parent, std::string_view name);

/// The text of the first child of that name; empty where there is none.
std::string textOf(pugi::xml_node parent, std::string_view name);

/// The same, but throws `MalformedDocument` where it is missing or empty.
std::string requiredTextOf(pugi::xml_node parent, std::string_view name);

/// Calls `action` with each child of that name.
template <class Action>
void forEachChild(pugi::xml_node parent, std::string_view name, const Action& action) {
  for (const auto child : parent.children())
    if (localName(child) == name)
      action(child);
}

/// Reads keys, which are encoded for URLs in a document that says so, and stand there as they are else.
class KeyReader {
 public:
  explicit KeyReader(pugi::xml_node root);

  std::string textOf(pugi::xml_node parent, std::string_view name) const;
  std::string requiredTextOf(pugi::xml_node parent, std::string_view name) const;

 private:
  std::string decoded(std::string text) const;
  bool isEncoded_;
};

}  // namespace foundation::storage::backend::s3::detail::wire
