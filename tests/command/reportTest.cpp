#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>

#include "command/answers/fileReplacement.h"
#include "command/console.h"
#include "command/report/html.h"
#include "command/report/report.h"
#include "command/report/serviceMatrix.h"
#include "tests/support/files.h"

namespace zamofw::report {
namespace {

using namespace std::string_literals;
using analysis::Hook;
using analysis::Number;
using analysis::SourceClass;

TEST(Html, TextBecomesNoMarkup) {
    const struct {
        std::string text;
        std::string markup;
    } rows[] = {
        {"Büro – 東京", "Büro – 東京"},
        {"<b>&amp;\"'</b>", "&lt;b&gt;&amp;amp;&quot;&#39;&lt;/b&gt;"},
        {"a\tb\nc\0d\x7f"s, "a\\u{9}b\\u{a}c\\u{0}d\\u{7f}"},
        {"\u202egnp.exe\u2069\ufeff\u0085", "\\u{202e}gnp.exe\\u{2069}\\u{feff}\\u{85}"},
        {"\xff<\xc3", "\\xff&lt;\\xc3"},
        {"\xed\xa0\x80", "\\xed\\xa0\\x80"},
        {std::string(1499, 'a') + "äbc", std::string(1499, 'a') + "ä… (2 more bytes)"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Html(row.text).str(), row.markup);
    }
    EXPECT_EQ(element("p", {{"title", "\"><x"}, {"class", ""}}, "<y>").str(),
              "<p title=\"&quot;&gt;&lt;x\">&lt;y&gt;</p>");
}

// Every element that begins ends, in the right order.
void expectNested(const std::string& html) {
    const std::regex tag("<(/?)([a-z0-9]+)[^>]*?(/?)>");
    std::vector<std::string> open;
    for (std::sregex_iterator at(html.begin(), html.end(), tag), end; at != end; ++at) {
        const std::string name = (*at)[2];
        if (name == "meta" || (*at)[3] == "/") {
            continue;
        }
        if ((*at)[1] != "/") {
            open.push_back(name);
        } else {
            ASSERT_FALSE(open.empty());
            EXPECT_EQ(name, open.back());
            open.pop_back();
        }
    }
    EXPECT_TRUE(open.empty());
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

// Wherever a text of others may come from.
Report evilReport() {
    const std::string evil = "</td><script src='http://192.0.2.1/'>";
    Report report;
    report.host = report.time = report.profile = report.file = evil;
    FW::FWRULE rule;
    rule.name = rule.table = evil;
    rule.labelList = rule.ipList = rule.portList = {evil};
    rule.chainList = {evil};
    report.rules.value = {evil, {{evil, {60, rule}}}, {{evil, FW::FW_POLICY_DENY}}};
    report.counters.reason = evil;
    report.matrix.value = {{evil}, 3, {{{evil}, true, false, {MatrixRow()}}}, {evil}};
    MatrixRow& row = report.matrix.value->groups[0].rows[0];
    row.addresses = {evil};
    row.cells = {Reach::kPartly};
    report.findings = {{Severity::kError, evil, evil, 1, 1, evil, evil, evil}};
    report.kernel.value = {{4, evil, evil, evil, evil}};
    report.changes.value = {{evil, evil, evil, evil, evil}};
    return report;
}

TEST(Page, HoldsWhatItIsToldAndNothingActive) {
    Report report = evilReport();
    std::string html = page(report);
    expectNested(html);
    EXPECT_EQ(count(html, "<script"), 0U);
    EXPECT_GE(count(html, "&lt;script src=&#39;http"), 60U * 5);
    EXPECT_EQ(count(html, "<details><summary>20 more rules"), 1U);
    EXPECT_NE(html.find("<strong>disabled</strong>"), std::string::npos);
    EXPECT_NE(html.find("<strong>differs</strong> in 1 place"), std::string::npos);
    EXPECT_NE(html.find("<strong>1 error</strong>"), std::string::npos);

    report = Report();
    report.isEnabled = true;
    report.rules.reason = report.matrix.reason = report.changes.reason = "no <i>reason";
    report.kernel.value.emplace();
    html = page(report);
    expectNested(html);
    EXPECT_EQ(count(html, "Not known: no &lt;i&gt;reason"), 3U);
    EXPECT_NE(html.find("is <strong>the same</strong>"), std::string::npos);
    EXPECT_NE(html.find("finds <strong>nothing</strong>"), std::string::npos);
}

TEST(ServiceMatrix, NamesRanges) {
    const Number top = analysis::lastAddress(6);
    const struct {
        analysis::Interval range;
        int family;
        const char* text;
    } rows[] = {
        {{0xC0A80100, 0xC0A801FF}, 4, "192.168.1.0/24"},
        {{0xC0A80100, 0xC0A80100}, 4, "192.168.1.0"},
        {{0xC0A80101, 0xC0A80102}, 4, "192.168.1.1-192.168.1.2"},
        {{0xC0A80100, 0xC0A801FE}, 4, "192.168.1.0-192.168.1.254"},
        {{0, 0xFFFFFFFF}, 4, "0.0.0.0/0"},
        {{0, top}, 6, "::/0"},
        {{top - 1, top}, 6, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffe/127"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(rangeText(row.range, row.family), row.text);
    }
}

FW::FWRULE ruleFor(std::int32_t group, std::vector<std::string> ports, std::int32_t protocol = 1) {
    FW::FWRULE rule;
    rule.ipGroup = FW::FW_IP_GROUP_ALL;
    rule.portGroup = group;
    rule.portList = std::move(ports);
    rule.protocol = protocol;
    return rule;
}

TEST(ServiceMatrix, TakesServicesFromRules) {
    FW::FWPROFILE profile;
    auto& rules = profile.rules["eth0"];
    rules = {ruleFor(FW::FW_PORT_GROUP_PORT, {"22", "80-81", "0-65535", "x", "9-8"}),
             ruleFor(FW::FW_PORT_GROUP_SERVICE, {"ssh", "unknown"}),
             ruleFor(FW::FW_PORT_GROUP_PORT, {"53"}, FW::FW_PROTOCOL_BOTH),
             ruleFor(FW::FW_PORT_GROUP_PORT, {}, FW::FW_PROTOCOL_ICMP),
             ruleFor(FW::FW_PORT_GROUP_PORT, {"5"}),
             ruleFor(FW::FW_PORT_GROUP_PORT, {"6"})};
    rules[4].enable = false;
    rules[5].portDirect = 1;
    std::string found;
    for (const Service& service : servicesOf(profile, {{"ssh", {{"tcp", {{22, 22}}}}}})) {
        found += service.name + " " + std::to_string(service.uses) + "; ";
    }
    EXPECT_EQ(found, "ssh 2; tcp+udp 53 1; tcp 80-81 1; icmp 1; ");
}

// "192.168.1.0/24 +-~": sources, then the columns.
std::string textOf(const MatrixGroup& group) {
    std::string text;
    for (const std::string& interface : group.interfaces) {
        text += interface + " ";
    }
    text += group.toMachine ? "in" : "";
    text += group.throughMachine ? "through" : "";
    for (const MatrixRow& row : group.rows) {
        text += "\n ";
        for (const std::string& address : row.addresses) {
            text += " " + address;
        }
        text += row.moreAddresses != 0 ? " more" : "";
        text += row.folded != 0 ? " " + std::to_string(row.folded) + " rows" : "";
        text += row.v4 == Rest::kEvery ? " every4" : row.v4 == Rest::kOther ? " other4" : "";
        text += row.v6 == Rest::kEvery ? " every6" : row.v6 == Rest::kOther ? " other6" : "";
        text += " ";
        for (const Reach reach : row.cells) {
            text += reach == Reach::kAllowed ? "+" : reach == Reach::kPartly ? "~" : "-";
        }
    }
    return text;
}

const std::vector<std::string> kProtocols = {"tcp", "udp", "icmp", "igmp", "47", "other"};

TEST(ServiceMatrix, TellsSourcesApartByWhatTheyReach) {
    const analysis::Intervals lan = {{0x0A000000, 0x0AFFFFFF}};
    const analysis::Intervals others = {{0, 0x09FFFFFF}, {0x0B000000, 0xFFFFFFFF}};
    const analysis::Intervals all6 = {{0, analysis::lastAddress(6)}};
    const std::vector<analysis::AllowedProtocol> web = {{"tcp", {{{80, 80}, {443, 500}}}}};
    const std::vector<analysis::AllowedProtocol> everything = {{"tcp", {{{0, 65535}}}},
                                                               {"udp", {{{0, 65535}}}},
                                                               {"icmp", {}},
                                                               {"igmp", {}},
                                                               {"47", {}},
                                                               {"other", {}}};
    std::vector<SourceClass> classes;
    for (const Hook hook : {Hook::kInput, Hook::kForward}) {
        for (const char* const in : {"eth0", "eth1"}) {
            classes.push_back({in, hook, 4, lan, everything});
            classes.push_back({in, hook, 4, others, web});
            classes.push_back({in, hook, 6, all6, web});
        }
    }
    classes.push_back({"global", Hook::kInput, 4, {{0, 0xFFFFFFFF}}, everything});
    classes.push_back({"global", Hook::kInput, 6, all6, everything});
    classes.push_back({"global", Hook::kForward, 4, {{0, 0xFFFFFFFF}}, {}});
    classes.push_back({"global", Hook::kForward, 6, all6, everything});
    const ServiceMatrix matrix =
        serviceMatrix(classes,
                      {{"http", {{"tcp", {{80, 80}}}}},
                       {"tls", {{"tcp", {{443, 600}}}}},
                       {"dns", {{"tcp", {{53, 53}}}, {"udp", {{53, 53}}}}}},
                      kProtocols);
    EXPECT_EQ(matrix.columns,
              (std::vector<std::string>{"http", "tls", "dns", "protocol 47", "everything else"}));
    ASSERT_EQ(matrix.groups.size(), 3U);
    EXPECT_EQ(textOf(matrix.groups[0]),
              "eth0 eth1 inthrough\n  10.0.0.0/8 +++++\n  other4 every6 +~---");
    EXPECT_EQ(textOf(matrix.groups[1]), "global in\n  every4 every6 +++++");
    EXPECT_EQ(textOf(matrix.groups[2]), "global through\n  every4 -----\n  every6 +++++");
}

// Forty sources with a port of their own each, on twelve interfaces.
TEST(ServiceMatrix, FoldsWhatIsTooMuch) {
    std::vector<SourceClass> classes;
    std::vector<Service> services;
    for (Number i = 0; i < 40; ++i) {
        const auto port = static_cast<unsigned>(i);
        services.push_back({"tcp " + std::to_string(port), {{"tcp", {{i, i}}}}, port / 20 + 1});
    }
    for (unsigned in = 0; in <= 12; ++in) {
        const std::string name = in == 12 ? "global" : "eth" + std::to_string(in);
        for (const Hook hook : {Hook::kInput, Hook::kForward}) {
            for (Number i = in; i < 40; ++i) {
                classes.push_back({name, hook, 4, {{i, i}}, {{"tcp", {{{i, i}}}}}});
            }
            classes.push_back({name, hook, 4, {{40, 0xFFFFFFFF}}, {}});
            classes.push_back({name, hook, 6, {{0, analysis::lastAddress(6)}}, {}});
        }
    }
    const ServiceMatrix matrix = serviceMatrix(classes, services, kProtocols);
    EXPECT_EQ(matrix.columns.size(), 16U);
    EXPECT_EQ(matrix.columns[0], "tcp 20");
    EXPECT_EQ(matrix.columns[14], "27 more");
    EXPECT_EQ(matrix.folded, 27U);
    ASSERT_EQ(matrix.groups.size(), 6U);
    EXPECT_EQ(matrix.leftOut.size(), 7U);
    EXPECT_EQ(matrix.groups[5].interfaces, std::vector<std::string>{"global"});
    EXPECT_EQ(textOf(matrix.groups[5]),
              "global inthrough\n"
              "  0.0.0.12-0.0.0.19 0.0.0.34-0.0.0.39 --------------~-\n"
              "  0.0.0.20 +---------------\n  0.0.0.21 -+--------------\n"
              "  0.0.0.22 --+-------------\n  0.0.0.23 ---+------------\n"
              "  0.0.0.24 ----+-----------\n  0.0.0.25 -----+----------\n"
              "  0.0.0.26 ------+---------\n  7 rows -------~~~~~~~--\n"
              "  other4 every6 ----------------");
}

std::string refusalOf(const std::string& path) {
    try {
        replaceFile(path, "new");
        return "written";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

TEST(FileReplacement, WritesNoOtherFileThanTheOneThatIsNamed) {
    const test::Directory directory("/tmp/report");
    const std::string file = directory / "page.html";
    test::writeFile(file, "old", 0666);
    test::writeFile(directory / "other", "kept");
    ASSERT_EQ(symlink("other", (directory / "link").c_str()), 0);
    ASSERT_EQ(symlink(".", (directory / "here").c_str()), 0);
    ASSERT_EQ(symlink("loop", (directory / "loop").c_str()), 0);
    EXPECT_EQ(refusalOf(directory / "here/../report/page.html"), "written");
    EXPECT_EQ(test::readFile(file), "new");
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    const struct {
        const char* name;
        const char* problem;
    } rows[] = {{"link", "it is a symbolic link"},
                {"here/none/x", "there is no directory `none`"},
                {"other/x", "Not a directory"},
                {"loop/x", "Too many levels of symbolic links"},
                {"", "is no name of a file"}};
    for (const auto& row : rows) {
        EXPECT_NE(refusalOf(directory / row.name).find(row.problem), std::string::npos) << row.name;
    }
    ASSERT_EQ(chmod((directory / ".").c_str(), 01777), 0);
    EXPECT_EQ(refusalOf(file), "written");
    EXPECT_NE(refusalOf(directory / "here/page.html").find("everybody may write"),
              std::string::npos);
    EXPECT_EQ(test::readFile(directory / "other"), "kept");
    EXPECT_EQ(test::namesIn(directory / ".").size(), 5U) << "nothing is left behind";
}

}  // namespace
}  // namespace zamofw::report
