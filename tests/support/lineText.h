// Command lines and the fake platform's events, made short for sessions.
#ifndef TESTS_SUPPORT_LINETEXT_H
#define TESTS_SUPPORT_LINETEXT_H

#include <json/value.h>

#include <string>
#include <vector>

namespace test {

// A command list: " / 46: -j DROP | eth0 / 4: -i eth0 -j DROP & -o eth0 -j DROP". The lines of
// "global" come first, then "|" and the other adapters. A text stands for a line of the table
// "filter" in the chain FORWARD_FIREWALL, and for the same one in INPUT_FIREWALL. "/" begins a
// rule, "&" another line of it, and a number tells the families from there on. Other lines are
// whole. Of the usual lines, ".." is shown between others.
std::string lineText(const Json::Value& commands, const Json::Value& usual);

// " > lock > close > 19 rules": what always comes together is "close" and "open" for the policies,
// "flush" for the chains, "load" and "unload" for the firewall's modules. Lines of rules and
// questions to the network tool are counted. The hooks are shown without "net/firewall_".
std::string eventText(std::vector<std::string> events);

// " ! fwDB: ... ! fwIptables: ...": the lines of the system log. Some that come together are one:
// "failed COMMAND", "unwritable profile FILE", "unreadable SETTINGS FILE", "empty store".
std::string logText(const std::vector<std::string>& lines);

}  // namespace test

#endif
