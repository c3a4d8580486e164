#pragma once

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat::fuzz {

// Without what stands between elements for the reader's sake.
inline std::string dropIndentation(const std::string& xml) {
  std::string text;
  for (std::size_t i = 0; i < xml.size(); ++i) {
    if (xml[i] == '\n') i = xml.find_first_not_of(" \n", i);
    text += xml[i];
  }
  return text;
}

// A resource file for each item of that kind in the embedded catalogue.
inline std::vector<std::string> splitCatalogue(ResourceType kind) {
  const std::string path = std::string(KORVAT_SOURCE_CATALOG) + "/" + TypeId::StdPrefix + "/" +
                           ResourceFileSet::getFileName(kind) + ".xml";
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  if (!file) throw std::runtime_error("cannot read " + path);

  const std::string text = content.str();
  const std::string tag =
      kind == ResourceType::Enum ? "enumt" : std::string(resourceTypeName(kind)) + "t";
  const std::string end = "</" + tag + ">";
  std::vector<std::string> files;
  std::size_t begin = text.find("<" + tag + " ");
  while (begin != std::string::npos) {
    const std::size_t size = text.find(end, begin) + end.size() - begin;
    files.push_back("<ldrf><control><folder>" + TypeId::StdPrefix +
                    "</folder></control><strings><string id=\"u_A\">amperes</string></strings>"
                    "<items>" +
                    dropIndentation(text.substr(begin, size)) + "</items></ldrf>");
    begin = text.find("<" + tag + " ", begin + size);
  }
  return files;
}

}  // namespace zavri::korvat::fuzz
