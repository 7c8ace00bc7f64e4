#include "command/answers/changeJson.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <map>
#include <ostream>
#include <string>

#include "command/answers/meaning.h"
#include "command/jsonLine.h"

namespace zamofw {
namespace {

using analysis::Change;
using analysis::Interval;
using analysis::Intervals;
using analysis::Number;

// What is collected before the stream, which is slow, gets it.
constexpr std::size_t kEnough = 64U << 10U;

class ChangeWriter {
  public:
    explicit ChangeWriter(std::ostream& out) : out_(out) {}

    void write(const std::vector<Change>& changes) {
        json_.StartArray();
        for (const Change& change : changes) {
            write(change);
            if (text_.GetSize() >= kEnough) {
                flush();
            }
        }
        json_.EndArray();
        flush();
    }

  private:
    // In the order of the names, as in every other answer.
    void write(const Change& change) {
        json_.StartObject();
        addName("adapter", change.in);
        if (change.destinations) {
            addAddresses("destinations", *change.destinations, change.family);
        }
        add("family", static_cast<unsigned>(change.family));
        add("from", verdictName(!change.isAllowedAfter));
        add("hook", hookName(change.hook));
        if (change.hook == analysis::Hook::kForward) {
            addName("out", change.out);
        }
        if (change.ports) {
            addPorts("ports", *change.ports);
        }
        add("protocol", change.protocol.c_str());
        if (change.sourcePorts) {
            addPorts("source_ports", *change.sourcePorts);
        }
        addAddresses("sources", *change.sources, change.family);
        add("to", verdictName(change.isAllowedAfter));
        addWitness(change.witness, change.protocol);
        json_.EndObject();
    }

    void addWitness(const analysis::Packet& packet, const std::string& protocol) {
        const bool hasPorts = analysis::hasPorts(packet.protocol);
        json_.Key("witness");
        json_.StartObject();
        add("destination", analysis::addressText(packet.destination, packet.family).c_str());
        if (hasPorts) {
            add("port", static_cast<unsigned>(packet.port));
        }
        add("protocol", protocol.c_str());
        add("source", analysis::addressText(packet.source, packet.family).c_str());
        if (hasPorts) {
            add("source_port", static_cast<unsigned>(packet.sourcePort));
        }
        json_.EndObject();
    }

    void add(const char* name, unsigned number) {
        json_.Key(name);
        json_.Uint(number);
    }

    void add(const char* name, const char* text) {
        json_.Key(name);
        json_.String(text);
    }

    // One that a profile chose may have any characters, or bytes that are none.
    void addName(const char* name, const std::string& interface) {
        std::string& text = names_[interface];
        if (text.empty()) {
            text = jsonLine(interface);
        }
        json_.Key(name);
        json_.RawValue(text.data(), text.size(), rapidjson::kStringType);
    }

    void addAddresses(const char* name, const Intervals& addresses, int family) {
        addList(name, addresses, [this, family](Number number) {
            json_.String(analysis::addressText(number, family).c_str());
        });
    }

    void addPorts(const char* name, const Intervals& ports) {
        addList(name, ports, [this](Number number) { json_.Uint(static_cast<unsigned>(number)); });
    }

    template <typename Add>
    void addList(const char* name, const Intervals& intervals, Add addNumber) {
        json_.Key(name);
        json_.StartArray();
        for (const Interval& interval : intervals) {
            json_.StartArray();
            addNumber(interval.first);
            addNumber(interval.last);
            json_.EndArray();
        }
        json_.EndArray();
    }

    void flush() {
        out_.write(text_.GetString(), static_cast<std::streamsize>(text_.GetSize()));
        text_.Clear();
    }

    std::ostream& out_;
    std::map<std::string, std::string> names_;  // as JSON
    rapidjson::StringBuffer text_;
    rapidjson::Writer<rapidjson::StringBuffer> json_{text_};
};

}  // namespace

void writeChanges(const std::vector<Change>& changes, std::ostream& out) {
    ChangeWriter(out).write(changes);
}

}  // namespace zamofw
