#include "command/apply/runNote.h"

#include <fcntl.h>
#include <json/reader.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "command/history/privateDirectory.h"
#include "command/jsonLine.h"

namespace zamofw {
namespace {

constexpr std::size_t kLargestNote = 1U << 20U;

posix::Descriptor openNotes() {
    return openPrivateDirectory("/run", {"zamofw"});
}

// Empty for a file that no note can be.
std::string noteText(const posix::Descriptor& file) {
    std::string text(kLargestNote, '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        const ssize_t count = read(file.get(), &text[size], text.size() - size);
        if (count == 0) {
            text.resize(size);
            return text;
        }
        if (count < 0 && errno != EINTR) {
            return {};
        }
        size += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return {};
}

}  // namespace

Json::Value readRunNote(const std::string& name) {
    const posix::Descriptor directory = openNotes();
    const posix::Descriptor file =
        directory ? openPrivateFile(directory, name, O_RDONLY) : posix::Descriptor();
    if (!file) {
        return {};
    }
    const std::string text = noteText(file);
    Json::Value note;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    try {
        const bool isParsed = reader->parse(text.data(), text.data() + text.size(), &note, nullptr);
        return isParsed && note.isObject() ? note : Json::Value();
    } catch (const Json::Exception&) {
        return {};
    }
}

bool writeRunNote(const std::string& name, const Json::Value& note) {
    const posix::Descriptor directory = openNotes();
    // Two that write at the same time have a file each.
    const std::string temporary = name + "." + std::to_string(getpid());
    return directory && replacePrivateFileVia(directory, temporary, name, jsonLine(note) + "\n");
}

}  // namespace zamofw
