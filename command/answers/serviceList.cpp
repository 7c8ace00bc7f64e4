#include <json/value.h>

#include <boost/algorithm/string/join.hpp>
#include <ostream>

#include "command/answers/serviceAnswers.h"
#include "command/answers/serviceCatalogue.h"
#include "command/answers/table.h"
#include "command/jsonLine.h"

namespace zamofw {
namespace {

Json::Value jsonOf(const std::optional<ServicePorts>& ports) {
    if (!ports) {
        return {};
    }
    Json::Value json(Json::objectValue);
    json["protocol"] = ports->protocol;
    json["ports"] = Json::Value(Json::arrayValue);
    for (const std::string& port : ports->ports) {
        json["ports"].append(port);
    }
    return json;
}

Json::Value jsonOf(const Service& service) {
    Json::Value json(Json::objectValue);
    json["name"] = service.name;
    json["title"] = service.title;
    json["enabled"] = service.enabled;
    json["destination"] = jsonOf(service.destination);
    json["source"] = jsonOf(service.source);
    return json;
}

std::string textOf(const std::optional<ServicePorts>& ports) {
    if (!ports) {
        return "-";
    }
    const std::string list = boost::algorithm::join(ports->ports, ",");
    return ports->protocol + (list.empty() ? "" : " " + list);
}

Row rowOf(const Service& service) {
    return {service.name,
            service.enabled ? "on" : "off",
            textOf(service.destination),
            textOf(service.source),
            service.title};
}

const Row kTitles = {"SERVICE", "STATE", "PORTS", "SOURCE PORTS", "TITLE"};

}  // namespace

Status serviceList(const Console& console) {
    Json::Value json(Json::objectValue);
    json["services"] = Json::Value(Json::arrayValue);
    std::vector<Row> rows;
    for (const Service& service : serviceCatalogue()) {
        json["services"].append(jsonOf(service));
        rows.push_back(rowOf(service));
    }
    if (console.json) {
        console.out << jsonLine(json) << "\n";
    } else {
        printTable(console, kTitles, rows);
    }
    return Status::kDone;
}

Status serviceShow(const Console& console, const std::string& name) {
    const Service service = requiredService(name);
    if (console.json) {
        console.out << jsonLine(jsonOf(service)) << "\n";
    } else {
        printTable(console, kTitles, {rowOf(service)});
    }
    return Status::kDone;
}

}  // namespace zamofw
