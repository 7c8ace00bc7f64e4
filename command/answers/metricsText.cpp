#include "command/answers/metricsText.h"

#include <iomanip>
#include <sstream>
#include <utility>

#include "command/words/plainText.h"

namespace zamofw {
namespace {

using Labels = std::vector<std::pair<const char*, std::string>>;

// One text that is no UTF-8 would make the collector refuse the whole file.
std::string labelText(const std::string& text) {
    const bool isReadable = isPlainText(text);
    std::string result;
    for (const char byte : text) {
        if (byte == '\\' || byte == '"') {
            result += '\\';
        }
        if (byte == '\n') {
            result += "\\n";
        } else {
            result += !isReadable && static_cast<unsigned char>(byte) >= 0x80 ? '?' : byte;
        }
    }
    return result;
}

std::string labelled(const Labels& labels) {
    std::string text;
    for (const auto& [name, value] : labels) {
        text += (text.empty() ? "{" : ",") + std::string(name) + "=\"" + labelText(value) + "\"";
    }
    return text.empty() ? text : text + "}";
}

class Text {
  public:
    Text() { stream_ << std::fixed << std::setprecision(3); }

    void begin(const char* name, const char* type, const char* help) {
        name_ = name;
        stream_ << "# HELP " << name << " " << help << "\n# TYPE " << name << " " << type << "\n";
    }

    template <typename Number>
    void add(Number value, const Labels& labels = {}) {
        stream_ << name_ << labelled(labels) << " " << value << "\n";
    }

    template <typename Number>
    void addGauge(const char* name, const char* help, Number value, const Labels& labels = {}) {
        begin(name, "gauge", help);
        add(value, labels);
    }

    [[nodiscard]] std::string take() const { return stream_.str(); }

  private:
    const char* name_ = "";
    std::ostringstream stream_;
};

void addState(const Metrics& metrics, Text& text) {
    text.addGauge(
        "zamofw_enabled", "Whether the firewall is switched on.", metrics.isEnabled ? 1 : 0);
    text.addGauge("zamofw_profile_info",
                  "The profile in force, as a label.",
                  1,
                  {{"profile", metrics.profile}});
    text.begin(
        "zamofw_kernel_state", "gauge", "Whether the kernel has the rules of the stored profile.");
    for (const char* const state : {"same", "differs", "unknown"}) {
        text.add(metrics.kernel == state ? 1 : 0, {{"state", state}});
    }
    if (metrics.rules) {
        text.addGauge("zamofw_rules", "Rules of the profile in force.", *metrics.rules);
    }
}

void addHits(const std::vector<RuleFigures>& rules, Text& text) {
    const auto addAll = [&](std::uint64_t Hits::*figure) {
        for (const RuleFigures& rule : rules) {
            text.add(rule.hits.*figure,
                     {{"adapter", rule.adapter},
                      {"position", std::to_string(rule.position)},
                      {"name", rule.name}});
        }
    };
    if (rules.empty()) {
        return;
    }
    text.begin("zamofw_rule_packets_total",
               "counter",
               "Packets that a rule has decided since the last reload.");
    addAll(&Hits::packets);
    text.begin("zamofw_rule_bytes_total",
               "counter",
               "Bytes of the packets that a rule has decided since the last reload.");
    addAll(&Hits::bytes);
}

void addLastChange(const ChangeFigures& change, Text& text) {
    text.addGauge("zamofw_last_change_timestamp_seconds",
                  "When the configuration was changed last.",
                  change.time);
    if (change.duration) {
        text.addGauge("zamofw_last_change_duration_seconds",
                      "How long the last change took.",
                      *change.duration);
    }
    text.addGauge("zamofw_last_change_result",
                  "The exit status of the last change: 0 is success.",
                  change.result);
}

void addLastReload(const ReloadFigures& reload, Text& text) {
    text.addGauge("zamofw_last_reload_timestamp_seconds",
                  "When rules were put into force last, since the start of the system.",
                  reload.time);
    text.addGauge(
        "zamofw_last_reload_duration_seconds", "How long the last reload took.", reload.duration);
    text.addGauge("zamofw_last_reload_success",
                  "Whether the last reload put its rules into force.",
                  reload.isApplied ? 1 : 0);
}

}  // namespace

std::string metricsText(const Metrics& metrics) {
    Text text;
    addState(metrics, text);
    addHits(metrics.hits, text);
    if (metrics.lastChange) {
        addLastChange(*metrics.lastChange, text);
    }
    if (metrics.lastReload) {
        addLastReload(*metrics.lastReload, text);
    }
    return text.take();
}

}  // namespace zamofw
