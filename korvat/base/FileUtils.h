#pragma once

#include <string>

#include "korvat/base/Export.h"

namespace zavri::util {

class KORVAT_API FileUtils {
 public:
  // "res/korvat/", the base folder of resources where none is given: relative to the working
  // directory.
  static const std::string& getDefaultBaseDir();

  // Name of the folder directly under `baseDir` (the default one when empty) that is called
  // `name`, else, unless `exactCase`, of the one folder that differs only in the case of ASCII
  // letters; empty when there is none or more than one, or when `baseDir` cannot be read. A name
  // that is empty, "." or "..", or holds a slash, a backslash or a zero byte, is never found.
  static std::string locateFolder(const std::string& baseDir, const std::string& name,
                                  bool exactCase);
};

}  // namespace zavri::util
