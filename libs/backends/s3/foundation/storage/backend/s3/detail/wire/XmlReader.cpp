#include <foundation/storage/backend/s3/detail/wire/XmlReader.h>

#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

#include <algorithm>

namespace foundation::storage::backend::s3::detail::wire {

XmlReader::XmlReader(std::string_view body, std::initializer_list<std::string_view> roots) {
  // A key may consist of blanks. The library skips document types, thus it knows no entities that grow.
  constexpr auto options = pugi::parse_default | pugi::parse_ws_pcdata_single;
  if (const auto result = document_.load_buffer(body.data(), body.size(), options); !result)
    throw MalformedDocument("The store's answer is no XML at byte " + std::to_string(result.offset) + " of " +
                            std::to_string(body.size()) + ": " + result.description());
  const auto name = localName(root());
  if (std::find(roots.begin(), roots.end(), name) == roots.end())
    throw MalformedDocument("The store answered with a document <" + std::string(name) + "> where <" +
                            std::string(*roots.begin()) + "> was expected");
}

std::string_view localName(pugi::xml_node element) {
  const std::string_view name = element.name();
  return name.substr(name.find(':') + 1);
}

pugi::xml_node childOf(pugi::xml_node parent, std::string_view name) {
  return parent.find_child([name](pugi::xml_node child) { return localName(child) == name; });
}

std::string textOf(pugi::xml_node parent, std::string_view name) {
  std::string text;
  for (const auto piece : childOf(parent, name).children())
    if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata)
      text += piece.value();
  return text;
}

std::string requiredTextOf(pugi::xml_node parent, std::string_view name) {
  auto text = textOf(parent, name);
  if (text.empty())
    throw MalformedDocument("The store answered with a <" + std::string(localName(parent)) + "> without <" +
                            std::string(name) + ">");
  return text;
}

KeyReader::KeyReader(pugi::xml_node root) : isEncoded_(wire::textOf(root, "EncodingType") == "url") {}

std::string KeyReader::textOf(pugi::xml_node parent, std::string_view name) const {
  return decoded(wire::textOf(parent, name));
}

std::string KeyReader::requiredTextOf(pugi::xml_node parent, std::string_view name) const {
  return decoded(wire::requiredTextOf(parent, name));
}

std::string KeyReader::decoded(std::string text) const {
  if (!isEncoded_)
    return text;
  // Some write a blank as '+', others as "%20"; all write a plus as "%2B".
  std::replace(text.begin(), text.end(), '+', ' ');
  return decode(text);
}

}  // namespace foundation::storage::backend::s3::detail::wire
