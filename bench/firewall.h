// The profiles that the benchmarks put into force, and the plainest way to start a program.
#ifndef BENCH_FIREWALL_H
#define BENCH_FIREWALL_H

#include <dlfcn.h>

#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace bench {

// Rules for eth0 of two lines each, and four lines for every fourth, which is for both families.
// With the default policy and the built-in lines there are 20 lines more.
FW::FWPROFILE profileWith(int rules);

// Makes these the only profiles, and the first of them the one in force.
void store(const std::vector<FW::FWPROFILE>& profiles);

void reload();

// posix_spawn and waitpid, nothing else; a program whose output is read gets a pipe. False when it
// cannot be started or exits with another status.
bool startPlainly(const std::vector<std::string>& arguments, bool read, int expected = 0);

// The platform's own function, for a program that replaces it by one of the same name.
template <typename Function>
Function* realFunction(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace bench

#endif
