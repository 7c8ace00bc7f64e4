#include "command/answers/metricsText.h"

#include <gtest/gtest.h>

#include <sstream>

namespace zamofw {
namespace {

TEST(Metrics, EscapesLabelsAndLeavesOutWhatIsNotKnown) {
    Metrics metrics;
    metrics.isEnabled = true;
    metrics.profile = "a \"b\" \\ c \xc3\xa4";
    metrics.kernel = "differs";
    metrics.hits = {{"eth0", 2, "half\n \xc3", {18446744073709551615U, 7}}};
    metrics.lastChange = ChangeFigures{1795306798.25, std::nullopt, 3};
    metrics.lastReload = ReloadFigures{1795306799.5, 0.0625, true};
    std::string samples;
    std::istringstream lines(metricsText(metrics));
    for (std::string line; std::getline(lines, line);) {
        samples += line[0] == '#' ? "" : line + "\n";
    }
    EXPECT_EQ(samples,
              "zamofw_enabled 1\n"
              "zamofw_profile_info{profile=\"a \\\"b\\\" \\\\ c \xc3\xa4\"} 1\n"
              "zamofw_kernel_state{state=\"same\"} 0\n"
              "zamofw_kernel_state{state=\"differs\"} 1\n"
              "zamofw_kernel_state{state=\"unknown\"} 0\n"
              "zamofw_rule_packets_total{adapter=\"eth0\",position=\"2\",name=\"half\\n ?\"} "
              "18446744073709551615\n"
              "zamofw_rule_bytes_total{adapter=\"eth0\",position=\"2\",name=\"half\\n ?\"} 7\n"
              "zamofw_last_change_timestamp_seconds 1795306798.250\n"
              "zamofw_last_change_result 3\n"
              "zamofw_last_reload_timestamp_seconds 1795306799.500\n"
              "zamofw_last_reload_duration_seconds 0.062\n"
              "zamofw_last_reload_success 1\n");
}

}  // namespace
}  // namespace zamofw
