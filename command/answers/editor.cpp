#include "command/answers/editor.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "command/console.h"
#include "command/document/textFile.h"
#include "command/words/quoting.h"
#include "posix/descriptor.h"
#include "posix/file.h"

extern char** environ;

namespace zamofw {
namespace {

constexpr const char* kSystemEditor = "editor";  // Debian's choice of the administrator

// Empty when the user has chosen none.
std::string chosenEditor() {
    for (const char* const name : {"VISUAL", "EDITOR"}) {
        const char* const value = std::getenv(name);
        std::string text = boost::trim_copy(std::string(value == nullptr ? "" : value));
        if (!text.empty()) {
            return text;
        }
    }
    return "";
}

std::vector<std::string> editorWords() {
    const std::string text = chosenEditor();
    std::vector<std::string> words = {kSystemEditor};
    if (!text.empty()) {
        boost::split(words, text, boost::is_space(), boost::token_compress_on);
    }
    return words;
}

// The signals that this process ignores are the editor's to handle.
pid_t start(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawnattr_t attributes;
    sigset_t defaults;
    (void)sigemptyset(&defaults);
    (void)sigaddset(&defaults, SIGPIPE);
    if (posix_spawnattr_init(&attributes) != 0) {
        failed("the editor cannot be started: out of memory");
    }
    (void)posix_spawnattr_setsigdefault(&attributes, &defaults);
    (void)posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t child = -1;
    const int error =
        posix_spawnp(&child, arguments[0], nullptr, &attributes, arguments.data(), environ);
    (void)posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        failed("the editor " + shown(words[0]) + " cannot be started: " + std::strerror(error),
               "name yours in the variable EDITOR, or use `zamofw profile set NAME FILE`");
    }
    return child;
}

}  // namespace

bool isEditorChosen() {
    return !chosenEditor().empty();
}

EditedFile::EditedFile(const std::string& text) {
    std::string directory = "/tmp/zamofw-edit-XXXXXX";
    if (mkdtemp(directory.data()) == nullptr) {
        failed(std::string("no private directory can be made in /tmp: ") + std::strerror(errno),
               "see that /tmp is not full or mounted read-only");
    }
    directory_ = directory;
    path_ = directory + "/profile.json";
    posix::Descriptor file = posix::openFile(path_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!file || !posix::writeWhole(file.get(), text) || !file.close()) {
        const int error = errno;
        (void)unlink(path_.c_str());
        (void)rmdir(directory_.c_str());
        failed(path_ + " cannot be written: " + std::strerror(error), "see that /tmp is not full");
    }
}

EditedFile::~EditedFile() {
    if (path_.empty()) {
        return;
    }
    // What editors leave beside it, such as backup copies, is nobody's to keep.
    (void)unlink(path_.c_str());
    (void)unlink((path_ + "~").c_str());
    (void)rmdir(directory_.c_str());
}

std::string EditedFile::keep() {
    return std::exchange(path_, "");
}

std::string EditedFile::edit() const {
    std::vector<std::string> words = editorWords();
    words.push_back(path_);
    const pid_t child = start(words);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        failed("the editor " + shown(words[0]) + " did not end well, so that nothing was changed",
               WIFEXITED(status) && WEXITSTATUS(status) == 127
                   ? "see that the program is there: the variable EDITOR names it"
                   : "");
    }
    return readText(path_);
}

}  // namespace zamofw
