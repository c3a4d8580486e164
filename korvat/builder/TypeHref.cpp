#include "korvat/builder/TypeHref.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace zavri::korvat::builder {

namespace {

// Namespace of the types in LonMark's resource files.
constexpr std::string_view kUrlPrefix = "http://types.lonmark.org/";

struct FolderRow {
  std::string_view name;
  ResourceType type;
};

constexpr std::array<FolderRow, 4> kFolders{{
    {"enums", ResourceType::Enum},
    {"nvs", ResourceType::Nv},
    {"cps", ResourceType::Cp},
    {"fps", ResourceType::Fp},
}};

ResourceType typeOfFolder(std::string_view folder) {
  for (const FolderRow& row : kFolders) {
    if (row.name == folder) return row.type;
  }
  return ResourceType::Invalid;
}

// Takes the text up to the next "/" off the front of `rest`, and the "/" with it.
std::string_view takeSegment(std::string_view& rest) {
  const std::size_t end = rest.find('/');
  const std::string_view segment = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return segment;
}

}  // namespace

bool isSetPrefix(const std::string& text) {
  if (text.size() != TypeId::StdPrefix.size()) return false;
  const bool isScope = text.back() >= '0' && text.back() <= '6';
  return isScope && TypeId(ResourceType::Nv, text, "").isPrefixValid();
}

std::string_view stripUrl(std::string_view text) {
  if (text.substr(0, kUrlPrefix.size()) == kUrlPrefix) text.remove_prefix(kUrlPrefix.size());
  return text;
}

HrefStatus parseHref(const std::string& text, TypeHref& href) {
  std::string_view rest = stripUrl(text);
  const std::string prefix(takeSegment(rest));
  const std::string_view folder = takeSegment(rest);
  if (folder.empty() && rest.empty()) return HrefStatus::Incomplete;
  if (!isSetPrefix(prefix)) return HrefStatus::BadPrefix;

  const ResourceType type = typeOfFolder(folder);
  if (type == ResourceType::Invalid) return HrefStatus::UnknownFolder;

  href = TypeHref{prefix, type, std::string(takeSegment(rest))};
  return HrefStatus::Valid;
}

}  // namespace zavri::korvat::builder
