// The words of the commands about services, adapters and countries.

#include "command/answers/adapterAnswers.h"
#include "command/answers/countryAnswers.h"
#include "command/answers/queryAnswer.h"
#include "command/answers/serviceAnswers.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer listServices(CLI::App&, const Words&) {
    return serviceList;
}

Answer showService(CLI::App& app, const Words&) {
    const auto name = std::make_shared<std::string>();
    addOperand(app, "NAME", *name);
    return [name](const Console& console) { return serviceShow(console, *name); };
}

Answer reserveServices(CLI::App& app, const Words& given) {
    struct Options {
        Words names;
        bool deny = false;
    };
    const auto options = std::make_shared<Options>();
    app.add_option("NAME", options->names)->required();
    app.add_flag("--deny", options->deny, "keep them closed; else they are kept open");
    return [options, given](const Console& console) {
        return serviceReserve(console, given, options->names, options->deny);
    };
}

Answer releaseService(CLI::App& app, const Words& given) {
    const auto name = std::make_shared<std::string>();
    addOperand(app, "NAME", *name);
    return [name, given](const Console& console) { return serviceRelease(console, given, *name); };
}

Answer listAdapters(CLI::App&, const Words&) {
    return adapterList;
}

Answer renameAdapter(CLI::App& app, const Words& given) {
    const auto names = std::make_shared<std::pair<std::string, std::string>>();
    addOperand(app, "OLD", names->first);
    addOperand(app, "NEW", names->second);
    return [names, given](const Console& console) {
        return adapterRename(console, given, names->first, names->second);
    };
}

Answer listCountries(CLI::App&, const Words&) {
    return countryList;
}

Answer showCountry(CLI::App& app, const Words&) {
    const auto code = std::make_shared<std::string>();
    addOperand(app, "CODE", *code);
    return [code](const Console& console) { return countryShow(console, *code); };
}

Answer askPort(CLI::App& app, const Words&) {
    const auto query = std::make_shared<PortQuery>();
    addOperand(app, "ADAPTER", query->adapter);
    addOperand(app, "PORT", query->port);
    addOptional(app, "--proto", query->protocol, "tcp, udp or both; both when not said");
    app.add_flag("--source", query->source, "PORT is a source port");
    return [query](const Console& console) { return queryPort(console, *query); };
}

Answer askService(CLI::App& app, const Words&) {
    const auto names = std::make_shared<std::pair<std::string, std::string>>();
    addOperand(app, "ADAPTER", names->first);
    addOperand(app, "NAME", names->second);
    return [names](const Console& console) {
        return queryService(console, names->first, names->second);
    };
}

}  // namespace

Commands catalogueCommands() {
    return {
        {"service list", "", "the services that rules may name", listServices, nullptr},
        {"service show", "NAME", "a service and its ports", showService, nullptr},
        {"service reserve",
         "NAME... [--deny]",
         "keep services open in every profile",
         reserveServices,
         nullptr},
        {"service release", "NAME", "take a service out of every rule", releaseService, nullptr},
        {"adapter list", "", "the adapters of the profile in force", listAdapters, nullptr},
        {"adapter rename",
         "OLD NEW",
         "move the rules of an adapter in every profile",
         renameAdapter,
         nullptr},
        {"country list", "", "the countries with address data", listCountries, nullptr},
        {"country show", "CODE", "the address ranges of a country", showCountry, nullptr},
        {"query port",
         "ADAPTER PORT [--proto P] [--source]",
         "whether a port is open",
         askPort,
         nullptr},
        {"query service", "ADAPTER NAME", "whether a service is open", askService, nullptr},
    };
}

}  // namespace zamofw
