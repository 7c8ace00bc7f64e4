#include "platform/serviceconf/serviceFile.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>

#include "platform/base/textFile.h"

namespace zamo {
namespace {

struct Protocol {
    std::string_view name;
    int code;
};

constexpr Protocol kProtocols[] = {
    {"tcp", ZAMO_FW_SERVICE_TCP},
    {"udp", ZAMO_FW_SERVICE_UDP},
    {"both", ZAMO_FW_SERVICE_BOTH},
    {"icmp", ZAMO_FW_SERVICE_ICMP},
    {"igmp", ZAMO_FW_SERVICE_IGMP},
};

constexpr int kHighestPort = 65535;
constexpr std::size_t kLongestPort = 5;

[[noreturn]] void refuse(const std::string& reason) {
    throw std::runtime_error(reason);
}

std::string readText(const std::string& path) {
    TextFile file;
    switch (readTextFile(path, file)) {
        case ReadResult::kDone:
            return std::move(file.text);
        case ReadResult::kUntrusted:
            refuse("a foreign file or a symbolic link in a directory that everybody may write to");
        case ReadResult::kMissing:
        case ReadResult::kFailed:
            break;
    }
    refuse(strerror(errno));
}

Json::Value parseDocument(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value document;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
        std::replace(errors.begin(), errors.end(), '\n', ' ');
        refuse("no valid JSON: " + errors.substr(0, 200));
    }
    if (!document.isObject()) {
        refuse("not a JSON object");
    }
    return document;
}

// The member, or null if it is missing. A JSON null counts as a wrong type.
const Json::Value* findMember(const Json::Value& object, const char* name, Json::ValueType type) {
    const Json::Value* member = object.find(name, name + strlen(name));
    if (member != nullptr && member->type() != type) {
        refuse(std::string(name) + " has a wrong type");
    }
    return member;
}

const Json::Value& requireMember(const Json::Value& object,
                                 const char* name,
                                 Json::ValueType type) {
    const Json::Value* member = findMember(object, name, type);
    if (member == nullptr) {
        refuse(std::string(name) + " is missing");
    }
    return *member;
}

int protocolCode(const std::string& name) {
    for (const Protocol& protocol : kProtocols) {
        if (protocol.name == name) {
            return protocol.code;
        }
    }
    refuse("unknown protocol " + name);
}

// 0 if the text is not a port. A leading zero is refused: other programs would read it as octal.
int parsePort(std::string_view text) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (text.empty() || text.size() > kLongestPort || text.front() == '0') {
        return 0;
    }
    if (!std::all_of(text.begin(), text.end(), isDigit)) {
        return 0;
    }
    const int port = std::stoi(std::string(text));
    return port <= kHighestPort ? port : 0;
}

bool isPortOrRange(std::string_view text) {
    const std::size_t dash = text.find('-');
    const int low = parsePort(text.substr(0, dash));
    if (dash == std::string_view::npos) {
        return low != 0;
    }
    return low != 0 && low <= parsePort(text.substr(dash + 1));
}

void appendPort(StringListPtr& list, const std::string& port) {
    VLIBCSzList* moved = list.release();
    const int pushed = VLIBCSzListPush(&moved, port.c_str());
    list.reset(moved);
    if (pushed < 0) {
        throw std::bad_alloc();
    }
}

StringListPtr parsePorts(const Json::Value& ports) {
    StringListPtr list(VLIBCSzListAlloc(static_cast<int>(ports.size())));
    if (list == nullptr) {
        throw std::bad_alloc();
    }
    for (const Json::Value& port : ports) {
        if (!port.isString()) {
            refuse("a port is not a text");
        }
        const std::string text = port.asString();
        if (!isPortOrRange(text)) {
            refuse("bad port " + text);
        }
        appendPort(list, text);
    }
    return list;
}

ServicePorts parsePair(const Json::Value& document, const char* name) {
    ServicePorts pair;
    const Json::Value* object = findMember(document, name, Json::objectValue);
    if (object == nullptr) {
        return pair;
    }
    pair.protocol = protocolCode(requireMember(*object, "protocol", Json::stringValue).asString());
    pair.ports = parsePorts(requireMember(*object, "ports", Json::arrayValue));
    return pair;
}

}  // namespace

Service readServiceFile(const std::string& path) {
    const Json::Value document = parseDocument(readText(path));
    (void)findMember(document, "title", Json::stringValue);
    const Json::Value* enabled = findMember(document, "enabled", Json::booleanValue);

    Service service;
    service.destination = parsePair(document, "destination");
    service.source = parsePair(document, "source");
    service.enabled = enabled == nullptr || enabled->asBool();
    return service;
}

}  // namespace zamo
