// The picture: sources against services.

#include <algorithm>

#include "command/report/sections.h"
#include "command/report/table.h"

namespace zamofw::report {
namespace {

constexpr std::size_t kColumnsOnPhone = 6;

struct Sign {
    Mark mark;
    const char* word;
};

Sign signOf(Reach reach) {
    switch (reach) {
        case Reach::kAllowed:
            return {Mark::kAllowed, "allowed"};
        case Reach::kPartly:
            return {Mark::kPartly, "partly"};
        case Reach::kDenied:
            break;
    }
    return {Mark::kDenied, "denied"};
}

std::string joined(const std::vector<std::string>& texts, std::size_t most) {
    std::string text;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i == most) {
            return text + " and " + grouped(texts.size() - most) + " more";
        }
        text += (i == 0 ? "" : i + 1 == texts.size() ? " and " : ", ") + texts[i];
    }
    return text;
}

std::string restText(const MatrixRow& row, bool isOnly) {
    if (row.v4 != Rest::kNone && row.v6 != Rest::kNone) {
        return isOnly ? "everyone" : "everyone else";
    }
    const Rest rest = row.v4 != Rest::kNone ? row.v4 : row.v6;
    const std::string family = row.v4 != Rest::kNone ? "IPv4" : "IPv6";
    switch (rest) {
        case Rest::kEvery:
            return "every " + family + " address";
        case Rest::kOther:
            return "every other " + family + " address";
        case Rest::kNone:
            break;
    }
    return "";
}

Html sourcesOf(const MatrixRow& row, bool isOnly) {
    if (row.folded != 0) {
        return grouped(row.folded) + " more groups of sources";
    }
    std::string addresses;
    for (const std::string& address : row.addresses) {
        addresses += (addresses.empty() ? "" : ", ") + address;
    }
    if (row.moreAddresses != 0) {
        addresses += " and " + amount(row.moreAddresses, "more range");
    }
    const std::string rest = restText(row, isOnly);
    Html text = rest;
    if (!addresses.empty()) {
        text += Html(rest.empty() ? "" : "; ") + element("span", {{"class", "code"}}, addresses);
    }
    return text;
}

std::vector<std::string> namesOf(std::vector<std::string> interfaces, bool isOnly) {
    std::replace(interfaces.begin(),
                 interfaces.end(),
                 std::string(analysis::Interfaces::kOther),
                 std::string(isOnly ? "any adapter" : "any other adapter"));
    return interfaces;
}

Html wayOf(const MatrixGroup& group, bool isOnly) {
    constexpr std::size_t kMostInterfaces = 5;
    const std::vector<std::string> names = namesOf(group.interfaces, isOnly);
    const char* const way = group.toMachine && group.throughMachine
                                ? ", to this machine and through it"
                            : group.toMachine ? ", to this machine"
                                              : ", through this machine";
    return Html("in through ") + element("b", foreign(joined(names, kMostInterfaces))) + way;
}

Html rowsOf(const MatrixGroup& group, std::size_t columns, bool isOnlyGroup) {
    Html rows = element("tr",
                        {{"class", "way"}},
                        element("th",
                                {{"scope", "rowgroup"}, {"colspan", std::to_string(columns + 1)}},
                                element("div", wayOf(group, isOnlyGroup))));
    for (const MatrixRow& row : group.rows) {
        Html cells = element("th", {{"scope", "row"}}, sourcesOf(row, group.rows.size() == 1));
        for (const Reach reach : row.cells) {
            const Sign sign = signOf(reach);
            cells +=
                element("td", mark(sign.mark) + element("span", {{"class", "unseen"}}, sign.word));
        }
        rows += element("tr", cells) + Html::markup("\n");
    }
    return element("tbody", rows);
}

Html legend(std::size_t columns) {
    Html items;
    for (const Reach reach : {Reach::kAllowed, Reach::kPartly, Reach::kDenied}) {
        const Sign sign = signOf(reach);
        items += element("span", {{"class", "key"}}, mark(sign.mark) + " " + sign.word);
    }
    if (columns > kColumnsOnPhone) {
        items += element("span", {{"class", "hint"}}, "The table scrolls sideways.");
    }
    return paragraph(items, "legend");
}

Html notes(const ServiceMatrix& matrix, const FW::FWPROFILE& profile) {
    std::string text =
        "New connections to addresses that no rule names. Allowed and denied hold for every port "
        "of a column; partly: for some of them.";
    if (matrix.folded != 0) {
        text += " The services that most rules name have a column; the other " +
                grouped(matrix.folded) + " share one.";
    }
    std::size_t elsewhere = 0;
    for (const auto& [adapter, rules] : profile.rules) {
        elsewhere += static_cast<std::size_t>(
            std::count_if(rules.begin(), rules.end(), [](const FW::FWRULE& rule) {
                const bool isAboutDestination =
                    rule.ipDirect == 0 && rule.ipGroup != FW::FW_IP_GROUP_ALL;
                const bool isAboutSourcePort =
                    rule.portDirect != 0 && rule.portGroup == FW::FW_PORT_GROUP_PORT;
                return rule.enable &&
                       (rule.adapterDirect == 0 || isAboutDestination || isAboutSourcePort);
            }));
    }
    if (elsewhere != 0) {
        text += " " + amount(elsewhere, "rule") + (elsewhere == 1 ? " is" : " are") +
                " about destinations, source ports or packets that go out, and not in the picture.";
    }
    if (!matrix.leftOut.empty()) {
        text += " Left out: " + joined(namesOf(matrix.leftOut, false), 8) + ".";
    }
    return paragraph(Html(text) + " " + element("span", {{"class", "code"}}, "zamofw matrix") +
                         " prints all of it.",
                     "note");
}

}  // namespace

Html matrixSection(const Report& report) {
    const char* const title = "Who reaches what";
    if (!report.matrix.value || !report.rules.value) {
        return section("reach", title, paragraph("Not known: " + report.matrix.reason, "note"));
    }
    const ServiceMatrix& matrix = *report.matrix.value;
    Html head = element("th", {{"scope", "col"}}, element("span", "from"));
    for (const std::string& column : matrix.columns) {
        head += element(
            "th", {{"scope", "col"}, {"class", "service"}}, element("span", foreign(column)));
    }
    Html body;
    for (const MatrixGroup& group : matrix.groups) {
        body += rowsOf(group, matrix.columns.size(), matrix.groups.size() == 1);
    }
    const Html table =
        element("table",
                {{"class", "matrix"}},
                element("caption", {{"class", "unseen"}}, "Sources against services") +
                    element("thead", element("tr", head)) + Html::markup("\n") + body);
    return section("reach",
                   title,
                   legend(matrix.columns.size()) +
                       element("div",
                               {{"class", "scroll"},
                                {"role", "region"},
                                {"aria-label", "Sources against services"},
                                {"tabindex", "0"}},
                               table) +
                       notes(matrix, *report.rules.value));
}

}  // namespace zamofw::report
