// Files on the test's private host.
#ifndef TESTS_SUPPORT_FILES_H
#define TESTS_SUPPORT_FILES_H

#include <string>
#include <vector>

namespace test {

void writeFile(const std::string& path, const std::string& text, unsigned mode = 0644);
std::string readFile(const std::string& path);
bool exists(const std::string& path);
std::vector<std::string> namesIn(const std::string& directory);

// A new empty directory, which is removed at the end.
class Directory {
  public:
    explicit Directory(std::string path);
    ~Directory();
    std::string operator/(const std::string& name) const { return path_ + '/' + name; }

  private:
    std::string path_;
};

}  // namespace test

#endif
