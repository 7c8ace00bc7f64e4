#include "command/apply/separateProcess.h"

#include <json/reader.h>
#include <json/writer.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "command/apply/program.h"
#include "command/console.h"
#include "posix/file.h"

namespace zamofw {
namespace {

// Not the command's name: whoever kills that by name must not hit both processes.
constexpr const char* kChildName = "fw-transaction";

constexpr const char* kAnswer = "answer";
constexpr const char* kStatus = "status";
constexpr const char* kMessage = "message";
constexpr const char* kRemedy = "remedy";

Json::Value failureReport(Status status, const std::string& message, const std::string& remedy) {
    Json::Value report;
    report[kStatus] = static_cast<int>(status);
    report[kMessage] = message;
    report[kRemedy] = remedy;
    return report;
}

Json::Value reportOf(const std::function<Json::Value()>& work) {
    try {
        Json::Value report;
        report[kAnswer] = work();
        return report;
    } catch (const Failure& failure) {
        return failureReport(failure.status(), failure.what(), failure.remedy());
    }
}

// The texts may be any bytes, and arrive as they are.
std::string textOf(const Json::Value& report) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, report);
}

void dieWith(pid_t parent) {
    // The second call is for a parent that died before the first one.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != parent) {
        _exit(EXIT_FAILURE);
    }
}

// The parent's end of the channel is closed when the work is not wanted any more.
bool isWanted(int channel) {
    char order = 0;
    ssize_t count = 0;
    do {
        count = read(channel, &order, 1);
    } while (count < 0 && errno == EINTR);
    return count == 1;
}

[[noreturn]] void workAsChild(pid_t parent, int channel, const SeparateProcess::Work& work) {
    dieWith(parent);
    (void)setsid();
    (void)prctl(PR_SET_NAME, kChildName);
    // A program that ends before it has read its input is a failure that the work deals with.
    (void)signal(SIGPIPE, SIG_IGN);
    bool isDone = false;
    try {
        isDone = !isWanted(channel) || posix::writeWhole(channel, textOf(reportOf(work)));
    } catch (...) {
        // Memory has run out, and the work may have been done nevertheless: the parent starts it
        // again. Nothing may get from here to those who called the parent.
        isDone = false;
    }
    // Not exit(): what waits in the buffers of the streams belongs to the parent.
    _exit(isDone ? EXIT_SUCCESS : EXIT_FAILURE);
}

std::string readToEnd(int input) {
    std::string text;
    char buffer[4096];
    while (true) {
        const ssize_t count = read(input, buffer, sizeof buffer);
        if (count > 0) {
            text.append(buffer, static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return text;
        }
    }
}

}  // namespace

SeparateProcess::SeparateProcess(Work work) : work_(std::move(work)) {
    keepStatusOfChildren();
    start();
}

void SeparateProcess::start() {
    Channel channel;
    const pid_t parent = getpid();
    child_ = fork();
    if (child_ < 0) {
        failed(std::string("no process can be started: ") + std::strerror(errno));
    }
    if (child_ == 0) {
        (void)channel.ours.close();
        workAsChild(parent, channel.theirs.get(), work_);
    }
    channel_ = std::move(channel.ours);
}

void SeparateProcess::end() {
    (void)channel_.close();
    while (child_ > 0 && waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
    }
    child_ = -1;
}

// None when the child has ended without a word.
std::optional<Json::Value> SeparateProcess::answer() {
    // Whether it is still there to read this, its answer tells.
    (void)send(channel_.get(), "", 1, MSG_NOSIGNAL);
    const std::string text = readToEnd(channel_.get());
    end();
    Json::Value report;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &report, nullptr)) {
        return std::nullopt;
    }
    if (report.isMember(kStatus)) {
        throw Failure(static_cast<Status>(report[kStatus].asInt()),
                      report[kMessage].asString(),
                      report[kRemedy].asString());
    }
    return report[kAnswer];
}

Json::Value SeparateProcess::run() {
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (child_ < 0) {
            start();
        }
        if (const std::optional<Json::Value> given = answer()) {
            return *given;
        }
    }
    failed("the process that puts the rules into force was killed or had no memory, twice",
           "run `zamofw reload`: IPv4 and IPv6 may have rules of different profiles");
}

Unstoppable::Unstoppable() : parent_(getppid()) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
        sigaddset(&signals, signal);
    }
    (void)pthread_sigmask(SIG_BLOCK, &signals, &previous_);
    (void)prctl(PR_SET_PDEATHSIG, 0);
}

Unstoppable::~Unstoppable() {
    dieWith(parent_);
    (void)pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace zamofw
