#include "readers/XmlElements.h"

#include "readers/ReaderText.h"
#include "readers/Records.h"

namespace tarvo::cli::detail {

void loadXml(pugi::xml_document& document, const std::string& path,
             const std::string& content) {
  const pugi::xml_parse_result result =
      document.load_buffer(content.data(), content.size());
  if (result) return;
  throw InputFailure(
      {path,
       text::lineAtOffset(content, static_cast<std::size_t>(result.offset)), "",
       std::string("XML: ") + result.description()});
}

std::string localName(const pugi::xml_node& node) {
  std::string name = node.name();
  const std::size_t colon = name.find(':');
  return colon == std::string::npos ? name : name.substr(colon + 1);
}

pugi::xml_node findElement(const pugi::xml_node& node, const std::string& name,
                           bool deep) {
  for (pugi::xml_node c : node.children()) {
    if (c.type() != pugi::node_element) continue;
    if (localName(c) == name) return c;
    if (deep) {
      if (pugi::xml_node found = findElement(c, name, true)) return found;
    }
  }
  return {};
}

void collectElements(const pugi::xml_node& node, const std::string& name,
                     std::vector<pugi::xml_node>& found) {
  for (pugi::xml_node c : node.children()) {
    if (c.type() != pugi::node_element) continue;
    if (localName(c) == name) {
      found.push_back(c);
    } else {
      collectElements(c, name, found);
    }
  }
}

}  // namespace tarvo::cli::detail
