#include "library/translate/ipv6Router.h"

#include <zamo/core.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "library/logging/log.h"
#include "posix/groupSignal.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwIptables";
constexpr const char* kNetworkTool = "/usr/zamo/sbin/zamonetdtool";
// Longer than any interface name. The tool's output must not make the caller use more memory.
constexpr std::size_t kMaxLine = 255;

// Reads a line with its line feed. A signal whose handler was installed without SA_RESTART
// interrupts a read; the line goes on after it. fgets() would drop what it has read by then.
bool readLine(FILE* stream, std::string& line) {
    while (line.size() < kMaxLine) {
        const int character = std::getc(stream);
        if (character != EOF) {
            line += static_cast<char>(character);
            if (character == '\n') {
                return true;
            }
        } else if (std::ferror(stream) != 0 && errno == EINTR) {
            std::clearerr(stream);
        } else {
            return std::ferror(stream) == 0 && !line.empty();
        }
    }
    return true;
}

enum class Answer { kLine, kNone, kNotStarted };

Answer askTool(const std::string& interface, std::string& line) {
    const std::array<const char*, 4> arguments = {
        kNetworkTool, "--get-ipv6-router-interface", interface.c_str(), nullptr};
    for (int start = 1;; ++start) {
        FILE* const stream = VLIBCPopen("r", arguments.data());
        if (stream == nullptr) {
            return Answer::kNotStarted;
        }
        const bool isRead = readLine(stream, line);
        const int status = VLIBCPclose(stream);
        if (isRead) {
            return Answer::kLine;
        }
        if (start == posix::kMaxStarts || status < 0 || !posix::endedByParentsSignal(status)) {
            return Answer::kNone;
        }
    }
}

}  // namespace

std::string ipv6RouterInterface(const std::string& interface) {
    std::string line;
    switch (askTool(interface, line)) {
        case Answer::kNotStarted:
            FW_LOG(LOG_ERR, "Failed to exec zamonetdtool with VLIBCPopen().");
            return interface;
        case Answer::kNone:
            FW_LOG(LOG_ERR, "Failed to getline after VLIBCPopen().");
            return interface;
        case Answer::kLine:
            break;
    }
    return line.c_str();  // NOLINT(readability-redundant-string-cstr): the name ends at a NUL
}

}  // namespace FW
