// Another host on the wire, to try connections from.
#ifndef TESTS_INTEGRATION_NEIGHBOUR_H
#define TESTS_INTEGRATION_NEIGHBOUR_H

#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

namespace test {

// A host with a network of its own, joined to the test's host by eth0 (10.1.0.1/24, fd01::1/64
// here) and eth1 (10.2.0.1/24).
class Neighbour {
  public:
    Neighbour();
    ~Neighbour();
    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;

    // Those of the TCP ports that answer a connection from the source address, by accepting or by
    // refusing it. All are tried at once, and `seconds` is the time that silence takes.
    std::set<int> answeringPorts(const std::string& source, const std::string& target,
                                 const std::vector<int>& ports, int seconds = 2) const;

  private:
    pid_t process_ = -1;
};

}  // namespace test

#endif
