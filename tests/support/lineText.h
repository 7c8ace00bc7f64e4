// Short texts for command lines, events of the fake platform and log lines.
#ifndef TESTS_SUPPORT_LINETEXT_H
#define TESTS_SUPPORT_LINETEXT_H

#include <json/value.h>

#include <string>
#include <vector>

namespace test {

// A command list: " / 46: -j DROP | eth0 / 4: -i eth0 -j DROP & -o eth0 -j DROP".
//
//   | NAME        begins an adapter; the lines of "global" come before the first
//   / and &       begin a rule, and another line of the same rule
//   4: 6: 46:     the families of what follows; 46 where both have the same lines
//   -i eth0 ...   a line of the table "filter" that is in both chains; other lines are whole
//   ..            lines of `usual`, which are shown only as a gap between others
std::string lineText(const Json::Value& commands, const Json::Value& usual);

// The fake platform's events: " > lock > close > 19 rules". Events that always come together have a
// name: "close" and "open" the policies, "flush" the chains, "load" and "unload" the firewall's
// modules. Rules, and questions to the network tool, are counted. Hooks lose "net/firewall_".
std::string eventText(std::vector<std::string> events);

// Lines of the system log: " ! fwDB: ... ! zamoFW: ...". Some that come together have a name:
// "failed COMMAND", "unwritable profile FILE", "unreadable SETTINGS", "damaged FILE",
// "failed Insert SERVICE: MODULES", "empty store".
std::string logText(const std::vector<std::string>& lines);

}  // namespace test

#endif
