#include "command/apply/sharedText.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "command/apply/program.h"
#include "command/console.h"
#include "posix/file.h"

namespace zamofw {

SharedText::SharedText() : file_(memoryFile("")) {}

SharedText::~SharedText() {
    if (!text_.empty()) {
        (void)munmap(const_cast<char*>(text_.data()), text_.size());
    }
}

void SharedText::write(const std::string& text) const {
    if (ftruncate(file_.get(), 0) != 0 || lseek(file_.get(), 0, SEEK_SET) != 0 ||
        !posix::writeWhole(file_.get(), text)) {
        failed(std::string("a file in memory cannot be written: ") + std::strerror(errno));
    }
}

std::string_view SharedText::read() {
    struct stat status = {};
    void* memory = MAP_FAILED;
    if (fstat(file_.get(), &status) == 0) {
        const auto size = static_cast<std::size_t>(status.st_size);
        memory = mmap(nullptr, size, PROT_READ, MAP_SHARED, file_.get(), 0);
        text_ = {static_cast<const char*>(memory), size};
    }
    if (memory == MAP_FAILED) {
        text_ = {};
        failed(std::string("a file in memory cannot be read: ") + std::strerror(errno));
    }
    return text_;
}

}  // namespace zamofw
