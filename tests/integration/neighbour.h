// A second host, from which tests try connections.
#ifndef TESTS_INTEGRATION_NEIGHBOUR_H
#define TESTS_INTEGRATION_NEIGHBOUR_H

#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

namespace test {

// It has its own network namespace. eth0 (10.1.0.1/24 and fd01::1/64 on this side) and eth1
// (10.2.0.1/24) connect it with the test's host.
class Neighbour {
  public:
    Neighbour();
    ~Neighbour();
    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;

    // The TCP ports that answer a connection from the source address, even if they refuse it. All
    // are tried at the same time. A port without an answer after `seconds` counts as silent.
    std::set<int> answeringPorts(const std::string& source, const std::string& target,
                                 const std::vector<int>& ports, int seconds = 2) const;

  private:
    pid_t process_ = -1;
};

}  // namespace test

#endif
