#include <zamo/core.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "platform/base/export.h"
#include "platform/base/fail.h"
#include "platform/base/watchedChild.h"
#include "posix/descriptor.h"

namespace {

struct StreamCloser {
    void operator()(FILE* stream) const { (void)fclose(stream); }
};
using StreamPtr = std::unique_ptr<FILE, StreamCloser>;

using ProgramPtr = std::unique_ptr<zamo::WatchedChild>;

class StreamTable {
  public:
    void add(FILE* stream, ProgramPtr program) {
        const std::lock_guard lock(mutex_);
        programs_[stream] = std::move(program);
    }
    ProgramPtr take(FILE* stream) {
        const std::lock_guard lock(mutex_);
        const auto node = programs_.extract(stream);
        return node ? std::move(node.mapped()) : nullptr;
    }

  private:
    std::mutex mutex_;
    std::map<FILE*, ProgramPtr> programs_;
};

// Never destroyed: other threads may use streams until the process ends.
StreamTable& streams() {
    static StreamTable& table = *new StreamTable;
    return table;
}

struct Pipe {
    posix::Descriptor reader;
    posix::Descriptor writer;
};

bool openPipe(Pipe& result) {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    posix::Descriptor reader(ends[0]);
    posix::Descriptor writer(ends[1]);
    result.reader = posix::aboveStandardStreams(std::move(reader));
    if (result.reader) {
        result.writer = posix::aboveStandardStreams(std::move(writer));
    }
    return static_cast<bool>(result.writer);
}

StreamPtr makeStream(posix::Descriptor fd, const char* mode) {
    StreamPtr stream(fdopen(fd.get(), mode));
    if (stream != nullptr) {
        (void)fd.release();
    }
    return stream;
}

StreamPtr openStream(bool reading, const char* const argv[]) {
    Pipe pipe;
    if (!openPipe(pipe)) {
        return nullptr;
    }
    StreamPtr stream =
        makeStream(std::move(reading ? pipe.reader : pipe.writer), reading ? "r" : "w");
    if (stream == nullptr) {
        return nullptr;
    }

    zamo::ChildSetup setup;
    setup.input = pipe.reader.get();
    setup.output = pipe.writer.get();
    auto program = std::make_unique<zamo::WatchedChild>();
    zamo::WatchedChild& running = *program;
    // Entered before the start: nothing may fail after it.
    streams().add(stream.get(), std::move(program));
    bool started = false;
    try {
        started = running.start(argv[0], argv, setup);
    } catch (const std::exception&) {
        errno = ENOMEM;
    }
    if (started) {
        return stream;
    }
    const int error = errno;
    (void)streams().take(stream.get());
    stream.reset();
    errno = error;
    return nullptr;
}

}  // namespace

ZAMO_EXPORT FILE* VLIBCPopen(const char* mode, const char* const argv[]) try {
    const std::string_view wanted = mode != nullptr ? mode : "";
    if ((wanted != "r" && wanted != "w") || argv == nullptr || argv[0] == nullptr) {
        errno = EINVAL;
        (void)ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
        return nullptr;
    }
    StreamPtr stream = openStream(wanted == "r", argv);
    if (stream == nullptr) {
        (void)ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    }
    return stream.release();
} catch (const std::exception&) {
    errno = ENOMEM;
    (void)ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
    return nullptr;
}

ZAMO_EXPORT int VLIBCPclose(FILE* stream) {
    const ProgramPtr program = streams().take(stream);
    if (program == nullptr) {
        errno = EINVAL;
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    // The program may end without reading everything; that is not an error.
    (void)fclose(stream);
    const int status = program->wait();
    return status < 0 ? ZAMO_FAIL(ZAMO_ERR_SYSTEM) : status;
}
