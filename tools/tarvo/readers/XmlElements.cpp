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

namespace {

// The element after `node` in document order within root's subtree,
// skipping node's own descendants when descend is false. Walks the tree
// with parent and sibling links instead of recursion, so that a document
// nested many thousands of levels deep cannot exhaust the stack.
pugi::xml_node nextInSubtree(const pugi::xml_node& root, pugi::xml_node node,
                             bool descend) {
  if (descend && node.first_child()) return node.first_child();
  while (node != root) {
    if (pugi::xml_node sibling = node.next_sibling()) return sibling;
    node = node.parent();
  }
  return {};
}

}  // namespace

pugi::xml_node findElement(const pugi::xml_node& node, const std::string& name,
                           bool deep) {
  for (pugi::xml_node c = node.first_child(); c;
       c = nextInSubtree(node, c, deep)) {
    if (c.type() == pugi::node_element && localName(c) == name) return c;
  }
  return {};
}

void collectElements(const pugi::xml_node& node, const std::string& name,
                     std::vector<pugi::xml_node>& found) {
  for (pugi::xml_node c = node.first_child(); c;) {
    const bool match = c.type() == pugi::node_element && localName(c) == name;
    if (match) found.push_back(c);
    c = nextInSubtree(node, c, !match);
  }
}

}  // namespace tarvo::cli::detail
