#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace sonvel::desktop {

/// A temporary folder, deleted on destruction.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = testing::TempDir() + "/sonvel-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
    path_ = std::filesystem::canonical(pattern);
  }

  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& relative = {}) const {
    return relative.empty() ? path_.string() : (path_ / relative).string();
  }

  std::string write(const std::string& relative, const std::string& text) const {
    const auto file = path_ / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
  }

  std::string writeProgram(const std::string& relative, const std::string& text = "\x7f"
                                                                                  "ELF") const {
    auto file = write(relative, text);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
  }

 private:
  std::filesystem::path path_;
};

} // namespace sonvel::desktop
