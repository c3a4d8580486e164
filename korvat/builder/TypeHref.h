#pragma once

#include <string>
#include <string_view>

#include "korvat/types/TypeId.h"

namespace zavri::korvat::builder {

// Where the "href" attribute of a reference points:
//
//   [http://types.lonmark.org/]<prefix>/<folder>[/<name>]
//
// such as "http://types.lonmark.org/0000000000000000-0/enums/occup_t".
struct TypeHref {
  std::string prefix;
  ResourceType type = ResourceType::Invalid;  // that the folder holds
  std::string name;                           // with its four letters; may be empty
};

enum class HrefStatus {
  Valid,
  Incomplete,     // prefix or folder is missing
  BadPrefix,      // does not begin with a prefix
  UnknownFolder,  // none of "enums", "nvs", "cps" and "fps"
};

// Splits `text`. `href` is written only for Valid. Segments behind the name are not looked at.
[[nodiscard]] HrefStatus parseHref(const std::string& text, TypeHref& href);

// `text` without "http://types.lonmark.org/" at its start; as it is where that is missing.
std::string_view stripUrl(std::string_view text);

// True for a text that names a resource set: a program ID and a scope from 0 to 6.
bool isSetPrefix(const std::string& text);

}  // namespace zavri::korvat::builder
