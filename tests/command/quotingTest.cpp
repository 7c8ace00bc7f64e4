#include "command/words/quoting.h"

#include <gtest/gtest.h>

#include "command/words/suggestion.h"

namespace zamofw {
namespace {

TEST(Quoting, KeepsWordsWholeForAShell) {
    EXPECT_EQ(shellQuoted({"allow", "--from", "fd00::/8", "22-90,x_y", "a=b@c%+"}),
              "allow --from fd00::/8 22-90,x_y a=b@c%+");
    EXPECT_EQ(shellQuoted({"", "a b", "it's", "$HOME", "~", "=x", "Büro", "a;b", "\\"}),
              "'' 'a b' 'it'\\''s' '$HOME' '~' '=x' 'Büro' 'a;b' '\\'");
}

TEST(Quoting, ShowsNothingThatDrivesATerminal) {
    using namespace std::string_literals;
    EXPECT_EQ(shown("Büro"), "`Büro`");
    EXPECT_EQ(shown("a\x1b[2J\0b"s), "`a\\x1b[2J\\x00b`");
    EXPECT_EQ(shown("\xff\xc2\x9b"), "`\\xff\\xc2\\x9b`");
    EXPECT_EQ(shown(std::string(199, 'a') + "ü"), "`" + std::string(199, 'a') + "...`");
}

TEST(Suggestion, NamesTheNearestOfTheCandidates) {
    const struct {
        const char* word;
        std::vector<std::string> candidates;
        const char* nearest;
    } rows[] = {
        {"sssh", {"dns", "ssh", "sftp"}, "did you mean `ssh`?"},
        {"--form", {"--port", "--from"}, "did you mean `--from`?"},
        {"HTTPS", {"http", "https"}, "did you mean `https`?"},
        {"manage", {"management", "ssh"}, "did you mean `management`?"},
        {"vpn", {"vpn_server_l2tp", "vpn_server_pptp"}, ""},
        {"nothing", {"dns", "ssh"}, ""},
        {"x", {"y"}, ""},
        {"", {"a"}, ""},
        {"--", {"--in"}, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(suggestion(row.word, row.candidates), row.nearest) << row.word;
    }
}

}  // namespace
}  // namespace zamofw
