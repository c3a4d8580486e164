#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "korvat/types/TypeManager.h"

namespace zavri::test {

// Resource files in a fresh temporary folder, which is removed with the object.
//
//   TempCatalogue files;
//   files.write(TypeId::StdPrefix, "nvs", "<nvt id='_x' idx='1'>...</nvt>");
//   TypeManager manager = files.makeManager();
class TempCatalogue {
 public:
  TempCatalogue() {
    static std::atomic<unsigned> next{0};
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    do {
      _folder = parent / ("korvat-test-" + std::to_string(processTag()) + "-" +
                          std::to_string(next.fetch_add(1)));
    } while (!std::filesystem::create_directory(_folder));
  }

  TempCatalogue(const TempCatalogue&) = delete;
  TempCatalogue& operator=(const TempCatalogue&) = delete;

  ~TempCatalogue() {
    std::error_code ignored;
    std::filesystem::remove_all(_folder, ignored);
  }

  // Writes <folder>/<file>.xml with `items` (XML of the item elements) in its directory elements.
  // `file` is "enums", "nvs", "cps" or "fps"; a file that is there already is replaced.
  void write(const std::string& folder, const std::string& file, const std::string& items) {
    writeRaw(folder, file,
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ldrf>\n<control><folder>" + folder +
                 "</folder></control>\n<items>\n" + items + "\n</items>\n</ldrf>\n");
  }

  // The same with `text` as the whole file.
  void writeRaw(const std::string& folder, const std::string& file, const std::string& text) {
    std::filesystem::create_directories(_folder / folder);
    std::ofstream stream(_folder / folder / (file + ".xml"), std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) throw std::runtime_error("cannot write " + folder + "/" + file + ".xml");
  }

  // The base folder, without a "/" at its end.
  std::string path() const { return _folder.string(); }

  // A manager of driver type "drv" over this folder.
  korvat::TypeManager makeManager() const {
    korvat::TypeManager manager("drv");
    manager.setBaseDir(path());
    return manager;
  }

 private:
  // Tells the folders of test processes that run side by side apart.
  static unsigned long processTag() {
    static const auto tag =
        static_cast<unsigned long>(std::chrono::steady_clock::now().time_since_epoch().count());
    return tag;
  }

  std::filesystem::path _folder;
};

}  // namespace zavri::test
