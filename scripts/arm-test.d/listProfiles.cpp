// The smallest program that uses the library: it lists the profiles.
#include <zamofirewall/zamofirewall.h>

#include <iostream>

int main() {
    FW::ZAMOFW_PROFILE profiles;
    std::vector<std::string> names;
    if (!profiles.profileEnum(names)) {
        return 1;
    }
    for (const std::string& name : names) {
        std::cout << name << '\n';
    }
    return 0;
}
