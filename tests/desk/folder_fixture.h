// A folder of its own for a test, filled from texts, and gone afterwards.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/drives.h"

namespace ventrix::desk {

class FolderFixture : public ::testing::Test {
  protected:
    FolderFixture() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ventrix-desk-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        platform::SetProcessDrives({{"Z:\\", "/"}});
    }
    ~FolderFixture() override { std::filesystem::remove_all(folder_); }

    std::string Native(const std::string& name) const { return (folder_ / name).string(); }
    std::string System(const std::string& name) const { return platform::ToSystem(Native(name)).value(); }
    void Write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories((folder_ / name).parent_path());
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    std::string Read(const std::string& name) const {
        std::ostringstream content;
        content << std::ifstream(folder_ / name, std::ios::binary).rdbuf();
        return content.str();
    }

  private:
    std::filesystem::path folder_;
};

}  // namespace ventrix::desk
