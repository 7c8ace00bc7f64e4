// The catalogue of services, with what the library does not tell of them.
#ifndef COMMAND_ANSWERS_SERVICECATALOGUE_H
#define COMMAND_ANSWERS_SERVICECATALOGUE_H

#include <optional>
#include <string>
#include <vector>

namespace zamofw {

struct ServicePorts {
    std::string protocol;
    std::vector<std::string> ports;
};

struct Service {
    std::string name;
    std::string title;
    bool enabled = true;
    std::optional<ServicePorts> destination;
    std::optional<ServicePorts> source;
};

// In ascending order of the names.
[[nodiscard]] std::vector<Service> serviceCatalogue();

// Wrong use, with a suggestion, when there is none of this name.
[[nodiscard]] Service requiredService(const std::string& name);

}  // namespace zamofw

#endif
