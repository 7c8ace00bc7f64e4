#include "command/history/connection.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string_view>
#include <vector>

namespace zamofw {
namespace {

constexpr std::string_view kVariable = "SSH_CONNECTION=";
// More than any chain of processes that leads to a person.
constexpr std::size_t kMostAncestors = 256;
constexpr std::size_t kLongestConnection = 256;

// They run a command for another user, often in a session and a terminal of its own.
constexpr std::array<const char*, 6> kWrappers = {
    "sudo", "sudo-rs", "su", "runuser", "doas", "pkexec"};

struct Process {
    pid_t id = 0;
    std::string name;
    pid_t parent = 0;
    pid_t session = 0;
    std::uint64_t began = 0;
};

// "4711 (name) S PARENT GROUP SESSION ...", where the 22nd word is the start.
std::optional<Process> processOf(pid_t id) {
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t begin = line.find('(');
    const std::size_t end = line.rfind(')');
    if (begin == std::string::npos || end == std::string::npos) {
        return std::nullopt;
    }
    constexpr int kSkipped = 15;
    Process process = {id, line.substr(begin + 1, end - begin - 1), 0, 0, 0};
    std::istringstream rest(line.substr(end + 1));
    std::string word;
    pid_t group = 0;
    rest >> word >> process.parent >> group >> process.session;
    for (int i = 0; i < kSkipped; ++i) {
        rest >> word;
    }
    return rest >> process.began ? std::optional(process) : std::nullopt;
}

bool isWrapper(const Process& process) {
    return std::find(kWrappers.begin(), kWrappers.end(), process.name) != kWrappers.end();
}

// This process, its parent, and so on. The first process of the system is nobody's terminal.
std::vector<Process> lineage() {
    std::vector<Process> processes;
    std::optional<Process> process = processOf(getpid());
    while (process && process->id > 1 && processes.size() < kMostAncestors) {
        processes.push_back(*process);
        process = processOf(process->parent);
    }
    return processes;
}

// What the process was started with, which a later change by itself does not show.
std::optional<std::string> variableOf(const Process& process) {
    std::ifstream file("/proc/" + std::to_string(process.id) + "/environ", std::ios::binary);
    for (std::string entry; std::getline(file, entry, '\0');) {
        if (std::string_view(entry).substr(0, kVariable.size()) == kVariable) {
            return entry.substr(kVariable.size(), kLongestConnection);
        }
    }
    return std::nullopt;
}

// A session that a wrapper has made belongs to the one that the wrapper was called in.
std::uint64_t beginOfSession(const std::vector<Process>& processes) {
    std::uint64_t began = std::numeric_limits<std::uint64_t>::max();
    for (auto process = processes.begin(); process != processes.end(); ++process) {
        const std::optional<Process> leader = processOf(process->session);
        began = std::min(began, process->began);
        if (leader && leader->session == leader->id) {
            began = std::min(began, leader->began);
        }
        const auto next = process + 1;
        if (next == processes.end() || (next->session != process->session && !isWrapper(*next))) {
            break;
        }
    }
    return began;
}

// The first of the processes that know this connection.
std::uint64_t beginOfConnection(const std::vector<Process>& processes, const std::string& ssh) {
    std::uint64_t began = std::numeric_limits<std::uint64_t>::max();
    for (const Process& process : processes) {
        if (variableOf(process) == ssh) {
            began = std::min(began, process.began);
        }
    }
    return began;
}

std::optional<std::string> connectionOf(const std::vector<Process>& processes) {
    for (const Process& process : processes) {
        if (const std::optional<std::string> value = variableOf(process)) {
            return value->empty() ? std::nullopt : value;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> Connection::client() const {
    if (!ssh) {
        return std::nullopt;
    }
    const std::string address = ssh->substr(0, ssh->find(' '));
    return address.substr(0, address.find('%'));
}

Connection currentConnection() {
    const std::vector<Process> processes = lineage();
    Connection connection = {connectionOf(processes), beginOfSession(processes)};
    if (connection.ssh) {
        connection.began =
            std::min(connection.began, beginOfConnection(processes, *connection.ssh));
    }
    return connection;
}

}  // namespace zamofw
