#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>

#include "command/answers/transferAnswers.h"
#include "command/document/textFile.h"
#include "command/history/configuration.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"
#include "posix/descriptor.h"
#include "posix/file.h"

namespace zamofw {
namespace {

void writeFile(const std::string& path, const std::string& text) {
    posix::Descriptor file =
        posix::openFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY, S_IRUSR | S_IWUSR);
    if (!file || !posix::writeWhole(file.get(), text) || !file.close()) {
        failed(shown(path) + " cannot be written: " + std::strerror(errno),
               "see that the directory is there and the disk is not full");
    }
}

}  // namespace

Status exportAnswer(const Console& console, const std::optional<std::string>& file) {
    const Json::Value configuration = exportedConfiguration();
    const std::string text = exportText(configuration);
    if (!file || *file == kStandardStream) {
        console.out << text;
        return Status::kDone;
    }
    writeFile(*file, text);
    if (console.json) {
        Json::Value json(Json::objectValue);
        json["file"] = *file;
        json["profiles"] = configuration[kExportedProfiles].size();
        console.out << jsonLine(json) << "\n";
    } else if (!console.quiet) {
        console.out << "the configuration is written to " << shown(*file) << "\n";
    }
    return Status::kDone;
}

}  // namespace zamofw
