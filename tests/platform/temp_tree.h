// A folder of its own for one test, empty at the start and gone at the end.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/drives.h"

class TempTree {
  public:
    TempTree() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ventrix-test-XXXXXX").string();
        native_ = std::filesystem::canonical(::mkdtemp(pattern.data()));
    }
    ~TempTree() {
        std::error_code ignored;
        std::filesystem::remove_all(native_, ignored);
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    /// Native path of a name below the folder.
    std::filesystem::path Native(const std::string& name) const {
        return name.empty() ? native_ : native_ / name;
    }

    /// The same in system notation.
    std::string System(const std::string& name) const {
        return ventrix::platform::ToSystem(Native(name).string()).value();
    }

    void Put(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories(Native(name).parent_path());
        std::ofstream(Native(name), std::ios::binary) << content;
    }

    std::string Get(const std::string& name) const {
        std::ifstream file(Native(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool Has(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(Native(name)));
    }

    void SetReadOnly(const std::string& name) const {
        std::filesystem::permissions(Native(name), std::filesystem::perms(0444));
    }

    /// How many entries the folder itself has.
    long Count() const {
        return std::distance(std::filesystem::directory_iterator(native_),
                             std::filesystem::directory_iterator());
    }

  private:
    std::filesystem::path native_;
};
