#include "tests/support/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace test {

void writeFile(const std::string& path, const std::string& text, unsigned mode) {
    std::ofstream(path, std::ios::binary) << text;
    ASSERT_EQ(chmod(path.c_str(), mode), 0) << path;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool exists(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

std::vector<std::string> namesIn(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

Directory::Directory(std::string path) : path_(std::move(path)) {
    fs::remove_all(path_);
    fs::create_directories(path_);
}

Directory::~Directory() { fs::remove_all(path_); }

}  // namespace test
