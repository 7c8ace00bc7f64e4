// A platform that records what it is asked for. It replaces those functions of the real one that
// reach out of the process, in every test program that links this file.
#ifndef TESTS_SUPPORT_FAKEPLATFORM_H
#define TESTS_SUPPORT_FAKEPLATFORM_H

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace test {

struct FakePlatform {
    // What was asked for, in order:
    //   "/sbin/iptables -F INPUT_FIREWALL"           a program that was run
    //   "insert firewall: a.ko b.ko", "remove ..."   modules
    //   "net/firewall_enable before 0"               a hook's plug-ins with their RESULT
    //   "tool eth0"                                  a start of the network tool
    //   "lock", "unlock"                             the execution lock
    std::vector<std::string> events;

    // Whether the event fails. By default none does.
    std::function<bool(const std::string& event)> fails;
    // Called at each event before it is recorded.
    std::function<void(const std::string& event)> onEvent;

    std::vector<std::string> interfaces;
    bool interfacesFail = false;
    std::string pppoe;
    bool pppoeFails = false;
    // What the network tool prints for an interface, by default the name of the interface.
    std::map<std::string, std::string> routers;
    // Opens what the network tool prints; by default a file that holds it.
    std::function<FILE*(const std::string& answer)> openAnswer;
};

// The platform in use. clearPlatform() replaces it by a new one.
FakePlatform& platform();
void clearPlatform();

}  // namespace test

#endif
