#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <boost/interprocess/exceptions.hpp>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "command/commandLine.h"
#include "command/systemLog.h"

namespace {

using zamofw::Status;

// A caller may have closed the standard streams: a file of ours must not get one of their numbers.
void openMissingStreams() {
    int fd = 0;
    do {
        fd = open("/dev/null", O_RDWR);
    } while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd >= 0) {
        (void)close(fd);
    }
}

bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

zamofw::Console consoleFor(const zamofw::GlobalOptions& options) {
    const char* const terminal = std::getenv("TERM");
    const bool isDumb = terminal == nullptr || std::strcmp(terminal, "dumb") == 0;
    const bool isTerminal = isatty(STDOUT_FILENO) == 1;
    const bool color = isTerminal && !isDumb && !options.noColor && !isSet("NO_COLOR");
    const bool canAsk = isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1;
    return {
        options.json, options.yes, options.quiet, color, isTerminal, canAsk, std::cout, std::cerr};
}

// Each line after the first one is indented.
std::string indented(const std::string& text) {
    std::string result;
    for (const char byte : text) {
        result += byte;
        result += byte == '\n' ? "  " : "";
    }
    return result;
}

Status report(Status status, const std::string& message, const std::string& remedy) {
    std::cerr << "zamofw: " << indented(message) << "\n";
    if (!remedy.empty()) {
        std::cerr << "  " << indented(remedy) << "\n";
    }
    return status;
}

Status run(const std::vector<std::string>& words) {
    const zamofw::CommandLine line = zamofw::parseCommandLine(words);
    zamofw::openSystemLog(/*shown=*/!line.options.quiet);
    // Debugging lines, such as those about a missing PPPoE interface, would look like failures.
    (void)setlogmask(LOG_UPTO(LOG_INFO));
    const Status status = line.answer(consoleFor(line.options));
    errno = 0;
    if (!std::cout.flush()) {
        return report(Status::kFailed,
                      std::string("the answer could not be written: ") + std::strerror(errno),
                      "");
    }
    return status;
}

Status guardedRun(const std::vector<std::string>& words) {
    try {
        return run(words);
    } catch (const zamofw::Failure& failure) {
        return report(failure.status(), failure.what(), failure.remedy());
    } catch (const boost::interprocess::interprocess_exception& problem) {
        return report(Status::kFailed,
                      std::string("a lock file cannot be opened: ") + problem.what(),
                      "the lock files are in /var/lock/firewall/, which root must be able to "
                      "write to, or else in /tmp/");
    } catch (const std::bad_alloc&) {
        return report(Status::kFailed, "out of memory", "");
    } catch (const std::exception& problem) {
        return report(Status::kFailed, std::string("internal fault: ") + problem.what(), "");
    }
}

}  // namespace

int main(int argc, char** argv) {
    openMissingStreams();
    // A reader that goes away must not end a change half-way.
    (void)std::signal(SIGPIPE, SIG_IGN);
    const Status status = guardedRun({argv + (argc > 0 ? 1 : 0), argv + argc});
    (void)std::cout.flush();
    return static_cast<int>(status);
}
