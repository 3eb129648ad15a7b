// Element lookups shared by the XML readers (GPX, KML). Names are matched
// without their namespace prefix, so "kml:Placemark" is a Placemark.
#ifndef TARVO_TOOLS_READERS_XMLELEMENTS_H_
#define TARVO_TOOLS_READERS_XMLELEMENTS_H_

#include <pugixml.hpp>
#include <string>
#include <vector>

namespace tarvo::cli::detail {

// Parses content (the text of the file at path) into document. Throws
// InputFailure naming the file and the line where the XML breaks.
void loadXml(pugi::xml_document& document, const std::string& path,
             const std::string& content);

// The element's name without a namespace prefix.
std::string localName(const pugi::xml_node& node);

// The first element with this local name among node's children or, with
// deep = true, anywhere below node (depth first). Empty when there is none.
pugi::xml_node findElement(const pugi::xml_node& node, const std::string& name,
                           bool deep);

// Appends every element with this local name below node, in document
// order, without looking inside the elements it appends.
void collectElements(const pugi::xml_node& node, const std::string& name,
                     std::vector<pugi::xml_node>& found);

}  // namespace tarvo::cli::detail

#endif  // TARVO_TOOLS_READERS_XMLELEMENTS_H_
